#pragma once

// The target converter: a target configuration file in, a board
// configuration file out.

#include <ostream>
#include <string>

namespace standin {

// 0 on success. Otherwise writes one message naming the file (and the line,
// for a malformed input) to `errors`, leaves no output file behind, and
// returns 1.
int convert_target_file(const std::string& input, const std::string& output, std::ostream& errors);

}  // namespace standin
