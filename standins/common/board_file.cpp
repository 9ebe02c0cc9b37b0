#include "common/board_file.h"

#include <algorithm>
#include <cstdio>
#include <set>
#include <unordered_map>

#include "common/text_input.h"

namespace standin {

int64_t board_model::cycle_us() const {
    int64_t total = 0;
    for (const operating_mode& mode : modes) {
        total += mode.time_us;
    }
    return total;
}

namespace {

constexpr std::string_view format_line = "board 1";

// Reads one file; the members remember which keys were seen, for the
// "given twice" and "missing" checks.
class board_reader {
  public:
    explicit board_reader(std::string_view file_name) : file_(file_name) {}

    board_model read(std::string_view content) {
        const std::vector<text_line> lines = meaningful_lines(content);
        if (lines.empty() || lines.front().text != format_line) {
            fail_at(file_, lines.empty() ? 1 : lines.front().number,
                    "expected 'board 1' as the first line of a board configuration");
        }
        for (size_t i = 1; i < lines.size(); ++i) {
            line_ = lines[i].number;
            read_line(split_words(lines[i].text));
        }
        line_ = lines.back().number;
        finish();
        return board_;
    }

  private:
    [[noreturn]] void fail(std::string_view problem) const { fail_at(file_, line_, problem); }

    int64_t whole_number(std::string_view word, std::string_view what, int64_t low,
                         int64_t high) const {
        const std::optional<int64_t> value = parse_fixed(word, 0);
        if (!value || *value < low || *value > high) {
            fail(std::string(what) + " must be a whole number from " + std::to_string(low) +
                 " to " + std::to_string(high) + ", not '" + std::string(word) + "'");
        }
        return *value;
    }

    void once(std::string_view key) {
        if (!seen_.insert(std::string(key)).second) {
            fail(std::string(key) + " is given twice");
        }
    }

    void expect_words(const std::vector<std::string_view>& words, size_t count,
                      std::string_view form) const {
        if (words.size() != count) {
            fail("expected '" + std::string(form) + "'");
        }
    }

    // "<key> <value>", given once, its value a whole number in [low, high].
    int64_t number_setting(const std::vector<std::string_view>& words, std::string_view value,
                           int64_t low, int64_t high) {
        const std::string_view key = words[0];
        expect_words(words, 2, std::string(key) + " " + std::string(value));
        once(key);
        return whole_number(words[1], key, low, high);
    }

    void read_line(const std::vector<std::string_view>& words) {
        const std::string_view key = words[0];
        if (key == "target") {
            expect_words(words, 2, "target <name>");
            once(key);
            if (!is_name(words[1])) {
                fail(name_problem("the target name"));
            }
            board_.target = words[1];
        } else if (key == "supply_uv") {
            board_.supply_uv = number_setting(words, "<microvolts>", 1, max_supply_uv);
        } else if (key == "source_mohm") {
            board_.source_resistance_mohm =
                number_setting(words, "<milliohms>", 0, max_resistance_mohm);
        } else if (key == "noise_ppm") {
            board_.noise_ppm = number_setting(words, "<parts per million>", 0, 1'000'000);
        } else if (key == "noise_floor_na") {
            board_.noise_floor_na = number_setting(words, "<nanoamperes>", 0, max_current_na);
        } else if (key == "trigger_delay_us") {
            board_.trigger_delay_us = number_setting(words, "<microseconds>", 0, max_mode_time_us);
        } else if (key == "powered_by") {
            expect_words(words, 2, "powered_by probe|external");
            once(key);
            if (words[1] != "probe" && words[1] != "external") {
                fail("expected 'powered_by probe' or 'powered_by external'");
            }
            board_.powered_by_probe = words[1] == "probe";
            powered_line_ = line_;
        } else if (key == "trigger_input") {
            expect_words(words, 2, "trigger_input D<n>");
            once(key);
            board_.trigger_input = logic_input(words[1]);
            if (!board_.trigger_input) {
                fail("expected 'trigger_input D<n>' with n from 0 to " +
                     std::to_string(logic_inputs - 1) + ", not '" + std::string(words[1]) + "'");
            }
        } else if (key == "mode") {
            read_mode(words);
        } else if (key == "function") {
            read_function(words);
        } else if (key == "marker") {
            read_marker(words);
        } else if (key == "board") {
            fail("'board' belongs on the first line only");
        } else {
            fail("unknown keyword '" + std::string(key) + "'");
        }
    }

    void read_mode(const std::vector<std::string_view>& words) {
        if (words.size() < 4) {
            fail("expected 'mode <name> <nanoamperes> <microseconds> [<function>:<share>...]'");
        }
        if (board_.modes.size() == max_modes) {
            fail("more than " + std::to_string(max_modes) + " modes");
        }
        operating_mode mode;
        mode.name = words[1];
        if (!is_name(mode.name)) {
            fail(name_problem("the mode name"));
        }
        for (const operating_mode& other : board_.modes) {
            if (other.name == mode.name) {
                fail("mode '" + mode.name + "' is given twice");
            }
        }
        mode.current_na = whole_number(words[2], "the mode's current", 0, max_current_na);
        mode.time_us = whole_number(words[3], "the mode's time", 1, max_mode_time_us);
        uint64_t total = 0;  // Wide enough that no count of shares wraps it to 10000.
        for (size_t i = 4; i < words.size(); ++i) {
            const size_t colon = words[i].find(':');
            mode_code code;
            code.function = words[i].substr(0, colon);
            if (colon == std::string_view::npos || !is_name(code.function)) {
                fail("expected '<function>:<share>', not '" + std::string(words[i]) + "'");
            }
            code.share = static_cast<uint32_t>(
                whole_number(words[i].substr(colon + 1), "a function's share", 1, 10000));
            total += code.share;
            mode.code.push_back(code);
        }
        if (!mode.code.empty() && total != 10000) {
            fail("the shares of mode '" + mode.name + "' add up to " + std::to_string(total) +
                 ", not 10000");
        }
        mode_lines_.push_back(line_);
        board_.modes.push_back(std::move(mode));
    }

    void read_function(const std::vector<std::string_view>& words) {
        expect_words(words, 4, "function <name> <start> <end>");
        code_region region;
        region.name = words[1];
        if (!is_name(region.name)) {
            fail(name_problem("the function name"));
        }
        if (!function_at_.emplace(region.name, board_.functions.size()).second) {
            fail("function '" + region.name + "' is given twice");
        }
        const std::optional<uint64_t> start = parse_address(words[2]);
        const std::optional<uint64_t> end = parse_address(words[3]);
        if (!start || !end || *end <= *start) {
            fail("expected a start and a larger end address, such as 0x08000400 0x08000480");
        }
        region.start = *start;
        region.end = *end;
        board_.functions.push_back(std::move(region));
    }

    void read_marker(const std::vector<std::string_view>& words) {
        expect_words(words, 3, "marker <code> <name>");
        code_marker marker;
        marker.code =
            static_cast<uint32_t>(whole_number(words[1], "a marker's code", 1, max_marker_code));
        marker.name = words[2];
        if (has_marker_code(board_, marker.code)) {
            fail("marker " + std::to_string(marker.code) + " is given twice");
        }
        marker_lines_.push_back(line_);
        board_.markers.push_back(std::move(marker));
    }

    // A marker names a function or a mode; the trigger input carries no code.
    void check_markers() const {
        for (size_t i = 0; i < board_.markers.size(); ++i) {
            const code_marker& marker = board_.markers[i];
            if (!has_mode(board_, marker.name) && function_at_.count(marker.name) == 0) {
                fail_at(file_, marker_lines_[i],
                        "marker " + std::to_string(marker.code) + " names '" + marker.name +
                            "', which is neither a function nor a mode of the board");
            }
            if (const std::string clash = trigger_clash(board_, marker); !clash.empty()) {
                fail_at(file_, marker_lines_[i], clash);
            }
        }
    }

    void finish() {
        for (std::string_view key : {"target", "supply_uv"}) {
            if (seen_.count(std::string(key)) == 0) {
                fail("no " + std::string(key) + " is given");
            }
        }
        if (board_.modes.empty()) {
            fail("no mode is given");
        }
        if (board_.powered_by_probe && !probe_can_supply(board_.supply_uv)) {
            fail_at(file_, powered_line_,
                    "powered_by probe needs a supply_uv from " +
                        std::to_string(min_probe_supply_uv) + " to " +
                        std::to_string(max_probe_supply_uv) + ", which a probe can give, not " +
                        std::to_string(board_.supply_uv));
        }
        for (size_t m = 0; m < board_.modes.size(); ++m) {
            for (mode_code& code : board_.modes[m].code) {
                const auto found = function_at_.find(code.function);
                if (found == function_at_.end()) {
                    fail_at(file_, mode_lines_[m],
                            "function '" + code.function + "' is not defined");
                }
                code.region = found->second;
            }
        }
        check_markers();
    }

    std::string_view file_;
    int line_ = 1;
    board_model board_;
    std::set<std::string> seen_;
    std::vector<int> mode_lines_;  // Line of each mode, for a late complaint.
    int powered_line_ = 0;
    std::vector<int> marker_lines_;
    // Index of each function by name: a file may hold many thousands.
    std::unordered_map<std::string, size_t> function_at_;
};

std::string hex_address(uint64_t value) {
    char text[24];
    std::snprintf(text, sizeof text, "0x%08llx", static_cast<unsigned long long>(value));
    return text;
}

}  // namespace

std::optional<uint32_t> logic_input(std::string_view word) {
    if (word.size() != 2 || word[0] != 'D' || word[1] < '0' ||
        word[1] >= static_cast<char>('0' + logic_inputs)) {
        return std::nullopt;
    }
    return static_cast<uint32_t>(word[1] - '0');
}

bool has_mode(const board_model& board, std::string_view name) {
    return std::any_of(board.modes.begin(), board.modes.end(),
                       [&](const operating_mode& mode) { return mode.name == name; });
}

bool has_marker_code(const board_model& board, uint32_t code) {
    return std::any_of(board.markers.begin(), board.markers.end(),
                       [&](const code_marker& marker) { return marker.code == code; });
}

std::string trigger_clash(const board_model& board, const code_marker& marker) {
    if (!board.trigger_input || (marker.code >> *board.trigger_input & 1u) == 0) {
        return {};
    }
    return "marker " + std::to_string(marker.code) + " sets D" +
           std::to_string(*board.trigger_input) + ", which is the trigger input";
}

bool probe_can_supply(int64_t supply_uv) {
    return supply_uv >= min_probe_supply_uv && supply_uv <= max_probe_supply_uv;
}

board_model parse_board(std::string_view content, std::string_view file_name) {
    return board_reader(file_name).read(content);
}

board_model read_board_file(const std::string& path) {
    return parse_board(read_whole_file(path), path);
}

std::string render_board(const board_model& board, std::string_view source) {
    std::string out;
    out += "# Board configuration of " + board.target + ", made from " + std::string(source) +
           ".\n# Read by the probe simulator. Units are nA, us, uV and mOhm; a function's\n"
           "# share of a mode is in hundredths of a percent.\n";
    out += std::string(format_line) + "\n";
    out += "target " + board.target + "\n";
    out += "supply_uv " + std::to_string(board.supply_uv) + "\n";
    out += "source_mohm " + std::to_string(board.source_resistance_mohm) + "\n";
    out += "noise_ppm " + std::to_string(board.noise_ppm) + "\n";
    out += "noise_floor_na " + std::to_string(board.noise_floor_na) + "\n";
    if (board.trigger_delay_us) {
        out += "trigger_delay_us " + std::to_string(*board.trigger_delay_us) + "\n";
    }
    if (board.powered_by_probe) {
        out += "powered_by probe\n";
    }
    if (board.trigger_input) {
        out += "trigger_input D" + std::to_string(*board.trigger_input) + "\n";
    }
    for (const operating_mode& mode : board.modes) {
        out += "mode " + mode.name + " " + std::to_string(mode.current_na) + " " +
               std::to_string(mode.time_us);
        for (const mode_code& code : mode.code) {
            out += " " + code.function + ":" + std::to_string(code.share);
        }
        out += "\n";
    }
    for (const code_region& region : board.functions) {
        out += "function " + region.name + " " + hex_address(region.start) + " " +
               hex_address(region.end) + "\n";
    }
    for (const code_marker& marker : board.markers) {
        out += "marker " + std::to_string(marker.code) + " " + marker.name + "\n";
    }
    return out;
}

}  // namespace standin
