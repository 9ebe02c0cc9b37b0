#pragma once

// The board configuration file (".dat"): the probe simulator reads it, the
// target converter writes it. docs/formats.md describes it.

#include <string>
#include <string_view>

#include "common/board.h"

namespace standin {

// Throws input_error "<file_name>:<line>: <problem>" for a malformed file.
board_model parse_board(std::string_view content, std::string_view file_name);

// Reads and parses; throws input_error also for a file that can't be read.
board_model read_board_file(const std::string& path);

// The file's text. `source` names what it was made from, for its comment.
std::string render_board(const board_model& board, std::string_view source);

}  // namespace standin
