#pragma once

#include "shell/commands.h"
#include "usecases/library_command.h"

// Runs the production test that an input file describes, through the
// use-case library's prodtest functions.
class prodtest final : public library_command {
  public:
    explicit prodtest(void* owned_handle);
};

void prodtest_command(argument_list& args, command_queue& queue);
void prodtest_help(bool advanced);
