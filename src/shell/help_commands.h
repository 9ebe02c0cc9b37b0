#pragma once

#include "shell/commands.h"

void quit_command(argument_list& args, command_queue& queue);
void help_command(argument_list& args, command_queue& queue);

void quit_help(bool advanced);
void help_help(bool advanced);
void connect_help(bool advanced);
void disconnect_help(bool advanced);
void log_help(bool advanced);
