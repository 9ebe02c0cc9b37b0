#pragma once

#include <string>

#include "shell/commands.h"
#include "usecases/library_command.h"

// Samples the target's energy use into a file, through the use-case
// library's wattscope functions.
class wattscope final : public library_command {
  public:
    wattscope(void* owned_handle, std::string output);
    std::string output_file() const override { return output; }

  private:
    const std::string output;
};

void wattscope_command(argument_list& args, command_queue& queue);
void wattscope_help(bool advanced);
