#pragma once

#include "shell/commands.h"
#include "usecases/library_command.h"

// Samples the target's energy use into a file, through the use-case
// library's wattscope functions.
class wattscope final : public library_command {
  public:
    explicit wattscope(void* owned_handle);
};

void wattscope_command(argument_list& args, command_queue& queue);
void wattscope_help(bool advanced);
