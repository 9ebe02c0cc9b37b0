#include <iostream>
#include <limits>
#include <stdexcept>
#include <string_view>

#include "shell/commands.h"
#include "shell/shell.h"

namespace {

constexpr std::size_t line_buffer_size = 1024;
constexpr char end_of_transmission = '\x04';

void write_banner() {
    std::cout << "Welcome to zelno interactive tool (v1.0.0.1)\n\n"
                 "Type 'help' to display top-level help and display a list of commands\n"
                 "Type 'help <command>' for help with a specific command\n"
              << std::endl
              << std::endl;
}

enum class read_result { line, skipped, end };

// Reads one line into `line`. The shell ends at end of input and at any read
// failure other than an over-long line.
read_result read_line(char (&line)[line_buffer_size]) {
    std::cin.getline(line, line_buffer_size, '\n');
    if (std::cin.eof() || std::cin.bad()) {
        return read_result::end;
    }
    if (!std::cin.fail()) {
        return read_result::line;
    }
    // Running a cut-off command could act on a cut-off file name, so the
    // whole line is dropped.
    std::cerr << "Input line too long (more than 1023 characters); ignored" << std::endl;
    std::cin.clear();
    std::cin.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
    return read_result::skipped;
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

int run_interactive() {
    const auto ctrl_handling = install_ctrl_handler();
    write_banner();
    try {
        char line[line_buffer_size];
        for (;;) {
            std::cout << "zelno> ";
            const read_result result = read_line(line);
            if (result == read_result::end) {
                exit_requested = true;
                break;
            }
            if (result == read_result::skipped) {
                continue;
            }
            if (line[0] == end_of_transmission) {
                exit_requested = true;
                break;
            }
            run_line(line);
            if (exit_requested) {
                break;
            }
        }
    } catch (const std::runtime_error& error) {
        std::cerr << "Error: " << error.what() << std::endl;
    }
    return 0;
}
