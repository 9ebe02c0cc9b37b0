#include <stdexcept>

#include "session/session.h"

bool session_connected = false;

void connect_command(argument_list&, command_queue&) {
    throw std::runtime_error("connect: not built yet\n");
}

void disconnect_command(argument_list&, command_queue&) {
    throw std::runtime_error("disconnect: not built yet\n");
}
