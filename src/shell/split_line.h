#pragma once

#include <string>
#include <vector>

// The shell's one tokenizer: cuts `text` into fields at `separator`. A field
// that begins with a double quote runs to the next double quote (or the end)
// and may hold the separator; quotes elsewhere are ordinary bytes. Empty
// fields are dropped. There is no escape character.
std::vector<std::string> split_line(const char* text, char separator);
