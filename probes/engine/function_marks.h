#pragma once

// What trace mode "ws+" attributes a row's time to, and how a probe that
// reads the firmware's marks on its logic inputs maps each code to it.
//
// An attribution is an index: below the board's function count it is
// board.functions[i]; from there on, board.modes[i - function count], for a
// marker that names a mode. no_function is time nothing names.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "common/board.h"
#include "engine/sample_source.h"

namespace standin::sim {

// Functions, then modes; the index of a name is its attribution.
std::vector<std::string> attribution_names(const board_model& board);

// The board's sleep mode: its lowest-current one, the first of equals.
size_t sleep_mode_of(const board_model& board);

// Each code's attribution and mark. A code is sleep when its marker names
// the sleep mode or a function that only the sleep mode lists, active for
// any other marker, unknown without one.
struct marker_map {
    std::array<uint32_t, 256> function{};
    std::array<mode_mark, 256> mark{};
    // The inputs that carry codes: all but the board's trigger input.
    uint8_t code_inputs = 0xff;
};

marker_map map_markers(const board_model& board);

}  // namespace standin::sim
