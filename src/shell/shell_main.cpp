#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

#include "execution/command_queue.h"
#include "shell/commands.h"
#include "shell/completion.h"
#include "shell/shell.h"
#include "shell/status_line.h"
#include "utilities/ufile.h"
#include "utilities/uterminal.h"

namespace {

constexpr std::size_t line_buffer_size = 1024;
constexpr char end_of_transmission = '\x04';
constexpr const char* prompt = "zelno> ";
constexpr const char* too_long = "Input line too long (more than 1023 characters); ignored";

void write_banner() {
    std::cout << "Welcome to zelno interactive tool (v1.0.0.1)\n\n"
                 "Type 'help' to display top-level help and display a list of commands\n"
                 "Type 'help <command>' for help with a specific command\n"
              << std::endl
              << std::endl;
}

enum class read_result { line, skipped, end };

// Where the lines come from: a stream (piped input or a script) or the line
// editor at a terminal. Every source applies the same rules to a line: at
// most 1023 bytes, one carriage return before the line feed dropped, and a
// first byte 0x04 ends the input, however long the line.
class line_source {
  public:
    virtual ~line_source() = default;
    virtual read_result read(char (&line)[line_buffer_size]) = 0;

  protected:
    static read_result too_long_line(const char* line) {
        if (line[0] == end_of_transmission) {
            return read_result::end;
        }
        // Running a cut-off command could act on a cut-off file name, so the
        // whole line is dropped.
        std::cerr << too_long << std::endl;
        return read_result::skipped;
    }
};

class stream_source : public line_source {
  public:
    // A script has no prompts, and its last line runs without a line feed
    // too: a CI job must not pass for want of one.
    stream_source(std::istream& stream, bool script) : in(stream), is_script(script) {}

    // The shell ends at end of input and at any read failure other than an
    // over-long line.
    read_result read(char (&line)[line_buffer_size]) override {
        if (!is_script) {
            std::cout << prompt;
        }
        if (first_read && is_script) {
            skip_byte_order_mark();
        }
        first_read = false;
        in.getline(line, line_buffer_size, '\n');
        if (is_script && in.eof() && !in.bad() && line[0] != '\0') {
            drop_carriage_return(line);
            return read_result::line;
        }
        if (in.eof() || in.bad()) {
            return read_result::end;
        }
        if (!in.fail()) {
            drop_carriage_return(line);
            return read_result::line;
        }
        in.clear();
        // 1023 bytes and a carriage return before the line feed still fit.
        if (in.peek() == '\r') {
            in.get();
            if (in.peek() == '\n') {
                in.get();
                return read_result::line;
            }
            if (in.eof()) {
                // The last line, with no line feed: a script runs it, piped
                // input drops it, as it drops any such line.
                return is_script ? read_result::line : read_result::end;
            }
        }
        const read_result result = too_long_line(line);
        in.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
        return result;
    }

  private:
    // Editors on Windows begin a UTF-8 file with one; it is no command's
    // byte. Piped input to the shell keeps every byte it is given.
    void skip_byte_order_mark() {
        static constexpr char mark[] = "\xEF\xBB\xBF";
        if (in.peek() != static_cast<unsigned char>(mark[0])) {
            return;
        }
        // A stream need not take back more than one byte, so the bytes read
        // of something that is no mark after all go to the front of the line.
        std::size_t matched = 0;
        while (matched < 3 && in.peek() == static_cast<unsigned char>(mark[matched])) {
            in.get();
            ++matched;
        }
        if (matched < 3) {
            for (std::size_t index = matched; index > 0; --index) {
                in.putback(mark[index - 1]);
            }
        }
    }

    static void drop_carriage_return(char* line) {
        const std::size_t length = std::strlen(line);
        if (length > 0 && line[length - 1] == '\r') {
            line[length - 1] = '\0';
        }
    }

    std::istream& in;
    bool is_script;
    bool first_read = true;
};

class editor_source : public line_source {
  public:
    editor_source() : editor(VX_UTL::uTerminal::history_file(), complete_words) {
        report_problem();
    }

    read_result read(char (&line)[line_buffer_size]) override {
        std::string text;
        const bool got = editor.read(prompt, text);
        report_problem();
        if (!got) {
            return read_result::end;
        }
        for (const char end : {'\n', '\r'}) {
            if (!text.empty() && text.back() == end) {
                text.pop_back();
            }
        }
        const std::size_t length = std::min(text.size(), line_buffer_size - 1);
        text.copy(line, length);
        line[length] = '\0';
        return text.size() < line_buffer_size ? read_result::line : too_long_line(line);
    }

  private:
    void report_problem() {
        const std::string problem = editor.take_problem();
        if (!problem.empty()) {
            std::cerr << problem << std::endl;
        }
    }

    VX_UTL::uLineEditor editor;
};

bool is_comment(const char* line) {
    const std::string_view text(line);
    const std::size_t first = text.find_first_not_of(" \t");
    return first != std::string_view::npos && text[first] == '#';
}

// Runs lines until the input ends, a line begins with 0x04, quit, or an end
// is requested. Lines go on running after a failure; the worst outcome is
// the result.
exit_status run_lines(line_source& source, bool skip_comments) {
    exit_status worst = exit_all_passed;
    try {
        char line[line_buffer_size];
        for (;;) {
            if (!ending::reading_begins()) {
                // The use cases of the last line were stopped, as by Ctrl+C.
                worst = worse(worst, exit_use_case_failed);
                exit_requested = true;
                break;
            }
            const read_result result = source.read(line);
            ending::reading_ends();
            if (result == read_result::end || line[0] == end_of_transmission) {
                exit_requested = true;
                break;
            }
            if (result == read_result::skipped) {
                worst = worse(worst, exit_refused);
                continue;
            }
            if (skip_comments && is_comment(line)) {
                continue;
            }
            worst = worse(worst, run_line(line));
            if (exit_requested) {
                break;
            }
        }
    } catch (const std::runtime_error& error) {
        std::cerr << "Error: " << error.what() << std::endl;
        worst = exit_refused;
    }
    return worst;
}

}  // namespace

int run_option_mode(int argc, char** argv) {
    bool help_requested = false;
    bool version_requested = false;
    for (int index = 1; index < argc; ++index) {
        const std::string_view argument = argv[index];
        if (argument == "-h" || argument == "--help") {
            help_requested = true;
        } else if (argument == "-v" || argument == "--version") {
            version_requested = true;
        } else {
            std::cerr << "Unknown option " << argument << ".";
            help_requested = true;
        }
    }
    if (help_requested) {
        run_line("help");
    }
    if (version_requested) {
        std::cout << "zelno " ZELNO_VERSION << std::endl;
    }
    return 0;
}

bool is_script_mode(int argc, char** argv) {
    return argc == 3 && std::string_view(argv[1]) == "--script";
}

int run_interactive() {
    const auto ctrl_handling = install_ctrl_handler();
    write_banner();
    if (!VX_UTL::uTerminal::is_interactive()) {
        stream_source source(std::cin, false);
        run_lines(source, false);
        return 0;
    }
    editor_source source;
    status_line status;
    global_command_queue.set_observer(&status);
    run_lines(source, false);
    global_command_queue.set_observer(nullptr);
    return 0;
}

int run_script(const char* name) {
    std::ifstream file;
    if (std::string_view(name) != "-") {
        std::error_code error;
        std::string reason;
        if (std::filesystem::is_directory(name, error)) {
            reason = std::make_error_code(std::errc::is_a_directory).message();
        } else if (!VX_UTL::opens_without_waiting(name)) {
            // Its open would wait for a writer; piped lines come by --script -.
            reason = "Not a regular file";
        } else {
            file.open(name);
            if (!file.is_open()) {
                reason = std::error_code(errno, std::generic_category()).message();
            }
        }
        if (!file.is_open()) {
            std::cerr << "zelno: cannot read script " << name << ": " << reason << std::endl;
            return exit_refused;
        }
    }
    ending::set_status(exit_use_case_failed);
    const auto ctrl_handling = install_ctrl_handler();
    stream_source source(file.is_open() ? file : std::cin, true);
    return run_lines(source, true);
}
