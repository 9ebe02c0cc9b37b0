#pragma once

// The options of a capture, checked: what wattscope_create keeps of zelno's
// record, which dies right after the call.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "common/board.h"
#include "usecases/usecase_abi.h"

namespace standin::sim {

// What a kind of probe allows, for checking options before a source is
// made: the sources supply the numbers, the checks are shared.
struct probe_traits {
    std::string_view name;  // For reasons: "a PPK2".
    int32_t max_rate = 0;
    struct range_window {
        std::string_view range;  // As -r and a test's "range" line name it.
        int64_t window_s;        // Without --saveall the file keeps this much, the latest.
    };
    range_window ranges[2];
    bool program_counters = false;  // Trace mode "ws+" is possible.
    // Reads the firmware's marks on logic inputs: "ws+" with a board's markers.
    bool logic_marks = false;
    bool trigger_on_input = false;  // --trig needs a trigger_input line, not trigger_delay_us.
};

struct capture_settings {
    board_model board;
    std::string config;  // The board configuration file, as given.
    std::string device;  // The session's device word, which chose the source.
    std::string output;
    int32_t rate = 0;
    bool gnuplot = false;
    bool trace_plus = false;
    std::string range = "lo";
    int64_t max_bytes = 0;
    int64_t duration_ms = 0;  // 0: no limit of its own.
    bool trigger = false;
    bool save_all = false;
    int64_t window_ms = 0;  // Without save_all, the file keeps the latest this much.
};

// Empty, with `error` set, for the first option that is wrong; the board
// is the session's, already read.
std::optional<capture_settings> check_capture_settings(const wattscope_options& options,
                                                       board_model board, const probe_traits& probe,
                                                       std::string& error);

// The board of a session, for both use cases: the file given to connect (or
// converted from a target file).
std::optional<board_model> read_session_board(const std::string& config, std::string& error);

}  // namespace standin::sim
