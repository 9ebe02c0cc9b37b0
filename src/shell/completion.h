#pragma once

#include <string>

#include "utilities/uterminal.h"

// Tab completion at the terminal: command names, the option names and fixed
// values of the command being typed, and file names after the options that
// take a file. Candidates come sorted.
VX_UTL::completion complete_words(const std::string& before_cursor);
