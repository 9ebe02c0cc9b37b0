#include "session/session.h"

#include <cstdio>
#include <iostream>
#include <stdexcept>

#include "execution/command_queue.h"
#include "options/argtable_table.h"
#include "utilities/ufile.h"

bool session_connected = false;

namespace {
constexpr const char* connect_usage =
    "usage: connect --device <device name> [--config <config file>] <prb|hosted>";
}

void connect_command(argument_list& args, command_queue& queue) {
    argtable_binding& argtable = get_argtable_binding();
    arg_str* device =
        argtable.arg_strn("d", "device", "<name of device>", 0, 1, "The name of the device");
    arg_str* config = argtable.arg_strn("c", "config", "<config file>", 1, 1, "Configuration file");
    arg_str* connection_type =
        argtable.arg_strn(nullptr, nullptr, "<hosted|prb>", 1, 1, "Connection type");
    arg_lit* help = argtable.arg_litn("h", "help", 0, 1, "Help");
    struct arg_end* end = argtable.arg_end(20);
    argtable_table<5> table(argtable, {device, config, connection_type, help, end});
    if (table.has_null_entry()) {
        throw std::runtime_error("connect: insufficient memory \n");
    }

    // Written before the parse, so a device given on the line, even an empty
    // one, takes its place.
    if (device->sval[0][0] == '\0') {
        device->sval[0] = "unused";
    }
    const int errors = table.parse(args);

    if (help->count == 1) {
        std::cout << "Connect to the target." << std::endl
                  << connect_usage << std::endl
                  << std::endl;
        return;
    }
    if (errors > 0) {
        argtable.arg_print_errors(stderr, end, args[0].c_str());
        queue.note_refused();
        std::cout << connect_usage << std::endl << std::endl;
    }

    // The connection type must be there for the parse, and means nothing
    // after it.
    const char* config_file = config->sval[0];
    std::FILE* file = VX_UTL::open_file_for_reading(config_file);
    if (file == nullptr) {
        std::cerr << "Could not open file " << config_file << std::endl;
        queue.note_refused();
        return;
    }
    std::fclose(file);

    session_config_file = config_file;
    session_device_name = device->sval[0];
    session_connected = true;
    convert_session_config();
}

void disconnect_command(argument_list& args, command_queue&) {
    if (args.size() >= 2) {
        std::cout << "Usage: disconnect" << std::endl;
        return;
    }
    session_config_file.clear();
    session_device_name.clear();
    session_connected = false;
}
