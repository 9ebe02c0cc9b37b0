#pragma once

#include <string>

#include "shell/commands.h"

// The session: what use cases get as --config and --device. Written by
// connect and disconnect, read by run_command; main thread only.
extern std::string session_config_file;
extern std::string session_device_name;
extern bool session_connected;

void connect_command(argument_list& args, command_queue& queue);
void disconnect_command(argument_list& args, command_queue& queue);

// Turns a ".tgcfg" session file into "ws_board.dat"; leaves a ".dat" alone.
void convert_session_config();
