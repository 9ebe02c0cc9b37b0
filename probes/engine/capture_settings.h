#pragma once

// The options of a capture, checked: what wattscope_create keeps of zelno's
// record, which dies right after the call.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "common/board.h"
#include "usecases/usecase_abi.h"
#include "sim/probe.h"

namespace standin::sim {

struct capture_settings {
    board_model board;
    std::string config;  // The board configuration file, as given.
    std::string output;
    int32_t rate = 0;
    bool gnuplot = false;
    bool trace_plus = false;
    probe_range range = low_range;
    int64_t max_bytes = 0;
    int64_t duration_ms = 0;  // 0: no limit of its own.
    bool trigger = false;
    bool save_all = false;
    int64_t window_ms = 0;  // Without save_all, the file keeps the latest this much.
};

// Empty, with `error` set, for the first option that is wrong.
std::optional<capture_settings> check_capture_options(const wattscope_options& options,
                                                      std::string& error);

// The board of a session, for both use cases: the file given to connect (or
// converted from a target file) and the device name.
std::optional<board_model> read_session_board(const std::string& config, std::string_view device,
                                              std::string& error);

}  // namespace standin::sim
