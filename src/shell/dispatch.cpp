#include <cstring>
#include <iostream>
#include <stdexcept>

#include "execution/command_queue.h"
#include "session/command_log.h"
#include "session/session.h"
#include "shell/commands.h"
#include "shell/split_line.h"

exit_status run_line(const char* line) {
    if (command_log_enabled) {
        std::clog << line << std::endl;
    }
    const std::vector<std::string> commands = split_line(line, ';');
    if (commands.empty()) {
        return exit_all_passed;
    }
    for (const std::string& command : commands) {
        run_command(command.c_str());
    }
    for (const std::string& name : global_command_queue.start_all()) {
        std::cerr << name << ": could not start: no thread available" << std::endl;
    }
    return global_command_queue.wait_all();
}

void run_command(const char* command) {
    argument_list args = split_line(command, ' ');
    if (args.empty()) {
        return;
    }
    const command_entry* entry = find_command(args[0]);
    if (entry == nullptr) {
        std::cerr << "Unknown command: " << command << std::endl;
        global_command_queue.note_refused();
        return;
    }
    if (entry->needs_session == 1) {
        // A substring test over the whole text, not a test of words: any
        // "-h" asks for help, and help needs no session.
        const bool asks_for_help = std::strstr(command, "-h") != nullptr;
        if (!asks_for_help && !session_connected) {
            std::cerr << "Session must be connected before running use case" << std::endl;
            global_command_queue.note_refused();
            return;
        }
        args.emplace_back("--config");
        args.push_back(session_config_file);
        args.emplace_back("--device");
        args.push_back(session_device_name);
    }
    try {
        entry->run(args, global_command_queue);
    } catch (const std::runtime_error& error) {
        std::cerr << error.what();
        global_command_queue.note_refused();
    }
}
