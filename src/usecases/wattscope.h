#pragma once

#include "shell/commands.h"

void wattscope_command(argument_list& args, command_queue& queue);
void wattscope_help(bool advanced);
