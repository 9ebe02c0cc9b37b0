#include "shell/help_commands.h"

#include <iomanip>
#include <iostream>

void quit_command(argument_list&, command_queue&) {
    exit_requested = true;
}

void help_command(argument_list& args, command_queue&) {
    if (args.size() < 2) {
        for (uint32_t row = 0; row < command_count; ++row) {
            const command_entry& entry = command_table[row];
            if (std::string_view(entry.name) == "prodtest") {
                continue;
            }
            std::cout << "  " << std::setiosflags(std::ios::left) << std::setw(14) << entry.name;
            entry.help(false);
        }
        std::cout << std::endl
                  << "For detailed help on a specific command type: help <command>" << std::endl;
        return;
    }
    for (std::size_t word = 1; word < args.size(); ++word) {
        const command_entry* entry = find_command(args[word]);
        if (entry == nullptr) {
            std::cerr << "Unknown command: " << args[word] << std::endl;
            continue;
        }
        entry->help(true);
    }
}

void quit_help(bool) {
    std::cout << "Exit the interactive tool" << std::endl;
}

void help_help(bool) {
    std::cout << "List all supported commands or get help on an invidual command" << std::endl;
}

void connect_help(bool) {
    std::cout << "Connect to the target" << std::endl;
}

void disconnect_help(bool) {
    std::cout << "Disconnect from a target" << std::endl;
}

void log_help(bool) {
    std::cout << "Enable logging" << std::endl;
}
