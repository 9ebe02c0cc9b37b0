#pragma once

#include <cstdint>
#include <memory>

#include "utilities/uconsole.h"

// The modes of main: arguments are options, never commands, but for the two
// of script mode, `--script FILE` (`-` is standard input).
bool is_script_mode(int argc, char** argv);
int run_option_mode(int argc, char** argv);
int run_interactive();
// Gives the script's exit status.
int run_script(const char* name);

// Routes Ctrl+C to console_ctrl_handler until the result is destroyed, which
// each mode does before it returns, so that no Ctrl+C reaches the queue
// during static destruction.
std::unique_ptr<VX_UTL::uConsoleControl> install_ctrl_handler();
// Ctrl+C stops the running use cases; other events are passed on.
bool console_ctrl_handler(uint32_t control_type);
