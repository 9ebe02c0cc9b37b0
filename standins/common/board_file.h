#pragma once

// The board configuration file (".dat"): the probe simulator reads it, the
// target converter writes it. docs/formats.md describes it.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "common/board.h"

namespace standin {

// "D3" as the number of a probe's logic input; empty for anything else.
std::optional<uint32_t> logic_input(std::string_view word);

// Whether a probe that powers the target can give it this supply.
bool probe_can_supply(int64_t supply_uv);

// Checks the board file and the target file share for markers.
bool has_mode(const board_model& board, std::string_view name);
bool has_marker_code(const board_model& board, uint32_t code);
// "marker <code> sets D<n>, which is the trigger input", or empty: the
// trigger input carries the trigger's edge, no code.
std::string trigger_clash(const board_model& board, const code_marker& marker);

// Throws input_error "<file_name>:<line>: <problem>" for a malformed file.
board_model parse_board(std::string_view content, std::string_view file_name);

// Reads and parses; throws input_error also for a file that can't be read.
board_model read_board_file(const std::string& path);

// The file's text. `source` names what it was made from, for its comment.
std::string render_board(const board_model& board, std::string_view source);

}  // namespace standin
