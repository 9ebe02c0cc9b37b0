#pragma once

#include <cstdint>
#include <memory>

#include "utilities/uconsole.h"

// The two modes of main: arguments are options, never commands.
int run_option_mode(int argc, char** argv);
int run_interactive();

// Routes Ctrl+C to console_ctrl_handler until the result is destroyed, which
// run_interactive does before it returns, so that no Ctrl+C reaches the
// queue during static destruction.
std::unique_ptr<VX_UTL::uConsoleControl> install_ctrl_handler();
// Ctrl+C stops the running use cases; other events are passed on.
bool console_ctrl_handler(uint32_t control_type);
