#pragma once

// The target configuration file (".tgcfg"): the readable description of a
// target that the converter turns into a board configuration. docs/formats.md
// describes it.

#include <string_view>

#include "common/board.h"

namespace standin {

// Throws input_error "<file_name>:<line>: <problem>" for a malformed file.
board_model parse_target(std::string_view content, std::string_view file_name);

}  // namespace standin
