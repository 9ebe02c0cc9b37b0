#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "execution/exit_status.h"

class command_queue;

using argument_list = std::vector<std::string>;
using command_run_handler = void (*)(argument_list& args, command_queue& queue);
using command_help_handler = void (*)(bool advanced);

// One row of the shell's vocabulary. `needs_session` marks a use case: the
// session rule applies and the session words are appended to its arguments.
struct command_entry {
    const char* name;
    command_run_handler run;
    command_help_handler help;
    uint8_t needs_session;
};

extern const command_entry command_table[];
extern const uint32_t command_count;

// Ends the interactive loop; read by the loop once after each line.
extern bool exit_requested;

// Runs one input line: logs it, cuts it into commands, dispatches each, then
// starts and waits for the use cases that the line queued. Gives the line's
// worst outcome.
exit_status run_line(const char* line);
void run_command(const char* command);

// The row whose name is exactly `word`, or null.
const command_entry* find_command(const std::string& word);
