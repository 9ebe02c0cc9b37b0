#include "session/command_log.h"

#include <cstdio>
#include <iostream>
#include <stdexcept>

#include "execution/command_queue.h"
#include "options/argtable_table.h"
#include "utilities/ufile.h"

bool command_log_enabled = false;

namespace {
constexpr const char* log_usage = "usage: log -cmd <logfile>";
}

command_log_file::~command_log_file() {
    if (clog_own_buffer != nullptr && std::clog.rdbuf() == rdbuf()) {
        std::clog.rdbuf(clog_own_buffer);
    }
}

void command_log_file::attach_clog() {
    std::streambuf* previous = std::clog.rdbuf(rdbuf());
    if (previous != rdbuf()) {
        clog_own_buffer = previous;
    }
}

void command_log_file::open_unless_waiting(const std::string& name) {
    if (is_open() || !VX_UTL::opens_without_waiting(name.c_str())) {
        setstate(std::ios_base::failbit);
        return;
    }
    // Binary, so that the lines end alike on every platform.
    open(name, std::ios_base::out | std::ios_base::binary);
    if (is_open()) {
        held_name = name;
    }
}

void log_command(argument_list& args, command_queue& queue) {
    argtable_binding& argtable = get_argtable_binding();
    arg_lit* command_logging = argtable.arg_litn("c", "cmd", 1, 1, "Command logging");
    arg_str* log_file = argtable.arg_strn(nullptr, nullptr, "<file>", 1, 1, "Log file");
    arg_lit* help = argtable.arg_litn("h", "help", 0, 1, "Help");
    struct arg_end* end = argtable.arg_end(20);
    argtable_table<4> table(argtable, {command_logging, log_file, help, end});
    if (table.has_null_entry()) {
        throw std::runtime_error("log: insufficient memory\n");
    }
    const int errors = table.parse(args);

    if (help->count == 1) {
        std::cout << "Enable logging." << std::endl << log_usage << std::endl << std::endl;
        return;
    }
    if (errors > 0) {
        argtable.arg_print_errors(stderr, end, args[0].c_str());
        queue.note_refused();
        std::cout << log_usage << std::endl << std::endl;
    }
    command_log_file_name = log_file->sval[0];
    // Emptying the output of a capture of this line would tear it. Logging
    // still starts, as with any file that can't be opened.
    if (!command_log_stream.is_open() &&
        queue.writes(command_log_file_name, &VX_UTL::is_same_file)) {
        enable_command_log(command_log_file_name, true);
        throw std::runtime_error("log: the file '" + command_log_file_name +
                                 "' is the output of a capture on this line\n");
    }
    enable_command_log(command_log_file_name);
}

void enable_command_log(const std::string& file_name, bool refused) {
    // A stream that already holds a file keeps it: the open only sets the
    // fail bit, and the lines go on to the first file.
    if (refused) {
        command_log_stream.setstate(std::ios_base::failbit);
    } else {
        command_log_stream.open_unless_waiting(file_name);
    }
    command_log_enabled = true;
    command_log_stream.attach_clog();
}
