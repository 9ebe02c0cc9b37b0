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
// Ctrl+C stops the running use cases; a request to end (SIGTERM, SIGHUP)
// stops them all and ends the shell after the line, or at once while it waits
// for input; other events are passed on.
bool console_ctrl_handler(uint32_t control_type);

// What the console control thread needs to know of the main thread to end
// the shell. All calls but the handler's are made on the main thread.
namespace ending {
// The exit status when the shell is ended by request; before install.
void set_status(int status);
// Before a read of input: false when an end is requested, and the loop ends.
bool reading_begins();
// After the read. Doesn't return if the handler is ending the process.
void reading_ends();
}  // namespace ending
