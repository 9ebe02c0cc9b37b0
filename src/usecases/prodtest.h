#pragma once

#include "shell/commands.h"

void prodtest_command(argument_list& args, command_queue& queue);
void prodtest_help(bool advanced);
