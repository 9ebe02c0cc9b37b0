#include "tgcfgsetup/target_file.h"

#include <algorithm>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

#include "common/board_file.h"
#include "common/text_input.h"
#include "common/units.h"
#include "tgcfgsetup/elf_functions.h"

namespace standin {

namespace {

enum class section { none, target, mode, code, markers };

// A relative path is taken from the folder of the file that names it, so
// that a target file works from any folder and moves with its firmware.
std::string beside(std::string_view file, std::string_view path) {
    const bool absolute =
        path.starts_with('/') || path.starts_with('\\') || (path.size() > 1 && path[1] == ':');
    const size_t slash = file.find_last_of("/\\");
    if (absolute || slash == std::string_view::npos) {
        return std::string(path);
    }
    return std::string(file.substr(0, slash + 1)) + std::string(path);
}

// Reads one file section by section; the members hold what is known so far.
class target_reader {
  public:
    explicit target_reader(std::string_view file_name) : file_(file_name) {}

    board_model read(std::string_view content) {
        const std::vector<text_line> lines = meaningful_lines(content);
        for (const text_line& line : lines) {
            line_ = line.number;
            if (line.text.front() == '[') {
                open_section(line.text);
            } else {
                read_setting(line.text);
            }
        }
        line_ = lines.empty() ? 1 : lines.back().number;
        finish();
        return board_;
    }

  private:
    [[noreturn]] void fail(std::string_view problem) const { fail_at(file_, line_, problem); }

    void open_section(std::string_view text) {
        close_mode();
        if (text.back() != ']') {
            fail("a section header ends in ']'");
        }
        const std::vector<std::string_view> words = split_words(text.substr(1, text.size() - 2));
        if (words.size() == 1 && words[0] == "target") {
            enter(section::target, "target");
        } else if (words.size() == 1 && words[0] == "code") {
            enter(section::code, "code");
        } else if (words.size() == 1 && words[0] == "markers") {
            enter(section::markers, "markers");
        } else if (words.size() == 2 && words[0] == "mode") {
            if (!is_name(words[1])) {
                fail(name_problem("a mode name"));
            }
            enter(section::mode, "mode " + std::string(words[1]));
            operating_mode mode;
            mode.name = words[1];
            board_.modes.push_back(mode);
            mode_keys_.clear();
            mode_lines_.push_back(line_);
        } else {
            fail("unknown section '" + std::string(text) +
                 "'; sections are [target], [mode <name>], [code] and [markers]");
        }
    }

    void enter(section which, const std::string& name) {
        if (!sections_.insert(name).second) {
            fail("section [" + name + "] is given twice");
        }
        if (which == section::mode && board_.modes.size() == max_modes) {
            fail("more than " + std::to_string(max_modes) + " modes");
        }
        section_ = which;
    }

    void read_setting(std::string_view text) {
        const size_t equals = text.find('=');
        if (equals == std::string_view::npos) {
            fail("expected '<key> = <value>' or a section header such as [target]");
        }
        const std::string key(trim(text.substr(0, equals)));
        const std::string_view value = trim(text.substr(equals + 1));
        if (value.empty()) {
            fail(key + " has no value");
        }
        switch (section_) {
            case section::none:
                fail("'" + key + "' stands before the first section");
            case section::target:
                target_setting(key, value);
                break;
            case section::mode:
                mode_setting(key, value);
                break;
            case section::code:
                code_setting(key, value);
                break;
            case section::markers:
                marker_setting(key, value);
                break;
        }
    }

    int64_t quantity(std::string_view key, std::string_view value, dimension kind,
                     int base_exponent, int64_t low, int64_t high) const {
        const unit* u = find_unit(split_quantity(value).unit);
        if (u == nullptr || u->kind != kind) {
            fail(std::string(key) + " needs a unit: " + unit_choices(kind) + ", not '" +
                 std::string(value) + "'");
        }
        const fixed_number parsed = read_quantity(value, kind, base_exponent);
        if (parsed.problem == number_problem::not_a_number) {
            fail(std::string(key) + ": '" + std::string(value) + "' is no number");
        }
        if (parsed.problem == number_problem::too_fine) {
            fail(std::string(key) + ": '" + std::string(value) +
                 "' is finer than the simulator resolves");
        }
        if (parsed.problem == number_problem::too_large || parsed.value < low ||
            parsed.value > high) {
            fail(std::string(key) + " " + std::string(value) + " is out of range");
        }
        return parsed.value;
    }

    void once(std::set<std::string>& keys, const std::string& key) const {
        if (!keys.insert(key).second) {
            fail(key + " is given twice");
        }
    }

    void target_setting(const std::string& key, std::string_view value) {
        once(target_keys_, key);
        if (key == "name") {
            if (!is_name(value)) {
                fail(name_problem("the target name"));
            }
            board_.target = value;
        } else if (key == "supply") {
            board_.supply_uv = quantity(key, value, dimension::voltage, -6, 1, max_supply_uv);
        } else if (key == "source_resistance") {
            board_.source_resistance_mohm =
                quantity(key, value, dimension::resistance, -3, 0, max_resistance_mohm);
        } else if (key == "noise") {
            board_.noise_ppm = quantity(key, value, dimension::ratio, -6, 0, 1'000'000);
        } else if (key == "noise_floor") {
            board_.noise_floor_na = quantity(key, value, dimension::current, -9, 0, max_current_na);
        } else if (key == "trigger_delay") {
            board_.trigger_delay_us =
                quantity(key, value, dimension::time, -6, 0, max_mode_time_us);
        } else if (key == "powered_by") {
            if (value != "probe" && value != "external") {
                fail("expected 'powered_by = probe' or 'powered_by = external'");
            }
            board_.powered_by_probe = value == "probe";
            powered_line_ = line_;
        } else if (key == "trigger_input") {
            board_.trigger_input = logic_input(value);
            if (!board_.trigger_input) {
                fail("expected 'trigger_input = D<n>' with n from 0 to " +
                     std::to_string(logic_inputs - 1) + ", not '" + std::string(value) + "'");
            }
        } else if (key == "firmware") {
            firmware_ = beside(file_, value);
            std::string problem;
            if (!read_elf_functions(firmware_, firmware_functions_, problem)) {
                fail(problem);
            }
        } else {
            fail("unknown key '" + key +
                 "' in [target]; keys are name, supply, source_resistance, noise, noise_floor, "
                 "trigger_delay, powered_by, trigger_input and firmware");
        }
    }

    void mode_setting(const std::string& key, std::string_view value) {
        once(mode_keys_, key);
        operating_mode& mode = board_.modes.back();
        if (key == "current") {
            mode.current_na = quantity(key, value, dimension::current, -9, 0, max_current_na);
        } else if (key == "time") {
            mode.time_us = quantity(key, value, dimension::time, -6, 1, max_mode_time_us);
        } else if (key == "code") {
            read_code_list(mode, value);
        } else {
            fail("unknown key '" + key + "' in a mode; keys are current, time and code");
        }
    }

    // "adc_read 75 %, filter_samples 25 %", or one function alone.
    void read_code_list(operating_mode& mode, std::string_view value) {
        uint64_t total = 0;  // Wide enough that no count of shares wraps it to 10000.
        bool all_shared = true;
        std::unordered_set<std::string> listed;
        while (!value.empty()) {
            const size_t comma = value.find(',');
            const std::string_view item = trim(value.substr(0, comma));
            value = comma == std::string_view::npos ? std::string_view{} : value.substr(comma + 1);
            const size_t blank = item.find_first_of(" \t");
            mode_code code;
            code.function = item.substr(0, blank);
            if (!is_name(code.function)) {
                fail("expected '<function> <share> %' in the code list, not '" + std::string(item) +
                     "'");
            }
            if (blank == std::string_view::npos) {
                all_shared = false;
            } else {
                code.share = static_cast<uint32_t>(quantity("the share of " + code.function,
                                                            trim(item.substr(blank)),
                                                            dimension::ratio, -4, 1, 10000));
                total += code.share;
            }
            if (!listed.insert(code.function).second) {
                fail("function '" + code.function + "' is listed twice");
            }
            mode.code.push_back(code);
        }
        if (!all_shared) {
            if (mode.code.size() != 1) {
                fail("give each function of the code list its share, such as 'main 60 %'");
            }
            mode.code[0].share = 10000;
        } else if (total != 10000) {
            fail("the shares of the code list add up to " + std::to_string(total / 100) + "." +
                 std::to_string(total / 10 % 10) + std::to_string(total % 10) + " %, not 100 %");
        }
    }

    void code_setting(const std::string& key, std::string_view value) {
        if (!is_name(key)) {
            fail(name_problem("a function name"));
        }
        if (!defined_.insert(key).second) {
            fail("function '" + key + "' is given twice");
        }
        const std::vector<std::string_view> words = split_words(value);
        const std::optional<uint64_t> start =
            words.size() == 2 ? parse_address(words[0]) : std::nullopt;
        const std::optional<uint64_t> size =
            words.size() == 2 ? parse_address(words[1]) : std::nullopt;
        if (!start || !size || *size == 0 || *start + *size < *start) {
            fail(
                "expected '<function> = <start address> <size in bytes>', such as "
                "'main = 0x08000400 0x80'");
        }
        board_.functions.push_back({key, *start, *start + *size});
    }

    // "<code> = <name>"; the name is checked once all sections are read.
    void marker_setting(const std::string& key, std::string_view value) {
        const std::optional<int64_t> code = parse_fixed(key, 0);
        if (!code || *code < 1 || *code > max_marker_code) {
            fail("a marker's code must be a whole number from 1 to " +
                 std::to_string(max_marker_code) + ", not '" + key + "'");
        }
        if (!is_name(value)) {
            fail(name_problem("a marker's name"));
        }
        if (has_marker_code(board_, static_cast<uint32_t>(*code))) {
            fail("marker " + std::to_string(*code) + " is given twice");
        }
        board_.markers.push_back({static_cast<uint32_t>(*code), std::string(value)});
        marker_lines_.push_back(line_);
    }

    // What the board reader would refuse, said here with this file's lines.
    void check_markers() const {
        for (size_t i = 0; i < board_.markers.size(); ++i) {
            const code_marker& marker = board_.markers[i];
            if (!has_mode(board_, marker.name) && defined_.count(marker.name) == 0) {
                fail_at(file_, marker_lines_[i],
                        "marker " + std::to_string(marker.code) + " names '" + marker.name +
                            "', which is neither a mode nor a function in [code]" +
                            (firmware_.empty() ? "" : " or " + firmware_));
            }
            if (const std::string clash = trigger_clash(board_, marker); !clash.empty()) {
                fail_at(file_, marker_lines_[i], clash);
            }
        }
    }

    // The firmware's functions, but those that [code] gives again: an
    // address written by hand overrides the symbol table. In address order.
    void add_firmware_functions() {
        if (firmware_.empty()) {
            return;
        }
        for (code_region& function : firmware_functions_) {
            if (defined_.insert(function.name).second) {
                board_.functions.push_back(std::move(function));
            }
        }
        std::sort(board_.functions.begin(), board_.functions.end(),
                  [](const code_region& a, const code_region& b) {
                      return a.start != b.start ? a.start < b.start : a.name < b.name;
                  });
    }

    // A mode's keys are checked when the next section starts or the file ends.
    void close_mode() {
        if (section_ != section::mode) {
            return;
        }
        const operating_mode& mode = board_.modes.back();
        for (const char* key : {"current", "time"}) {
            if (mode_keys_.count(key) == 0) {
                fail_at(file_, mode_lines_.back(), "mode '" + mode.name + "' has no " + key);
            }
        }
    }

    void finish() {
        close_mode();
        if (sections_.count("target") == 0) {
            fail("no [target] section");
        }
        for (const char* key : {"name", "supply"}) {
            if (target_keys_.count(key) == 0) {
                fail(std::string("[target] has no ") + key);
            }
        }
        if (board_.modes.empty()) {
            fail("no [mode <name>] section");
        }
        if (board_.powered_by_probe && !probe_can_supply(board_.supply_uv)) {
            fail_at(file_, powered_line_,
                    "powered_by = probe needs a supply from 0.8 V to 5 V, which a probe can give");
        }
        add_firmware_functions();
        for (size_t m = 0; m < board_.modes.size(); ++m) {
            for (const mode_code& code : board_.modes[m].code) {
                if (defined_.count(code.function) == 0) {
                    fail_at(file_, mode_lines_[m],
                            "function '" + code.function + "' of mode '" + board_.modes[m].name +
                                (firmware_.empty() ? "' is not in [code]"
                                                   : "' is neither in [code] nor in " + firmware_));
                }
            }
        }
        check_markers();
    }

    std::string_view file_;
    int line_ = 1;
    section section_ = section::none;
    board_model board_;
    std::set<std::string> sections_;
    std::set<std::string> target_keys_;
    std::set<std::string> mode_keys_;  // Of the mode being read.
    std::vector<int> mode_lines_;      // Header line of each mode.
    std::vector<int> marker_lines_;    // Line of each marker.
    int powered_line_ = 0;
    // Functions of [code], and at the end of the firmware; there may be many thousands.
    std::unordered_set<std::string> defined_;
    std::string firmware_;  // The ELF file's path, empty without one.
    std::vector<code_region> firmware_functions_;
};

}  // namespace

board_model parse_target(std::string_view content, std::string_view file_name) {
    return target_reader(file_name).read(content);
}

}  // namespace standin
