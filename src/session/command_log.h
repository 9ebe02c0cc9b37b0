#pragma once

#include <fstream>
#include <string>

#include "shell/commands.h"

// The file of the command log. std::clog writes through its buffer once
// logging is on; the destructor gives std::clog its own buffer back first, so
// nothing at the end of the process writes through a dead buffer.
class command_log_file : public std::ofstream {
  public:
    command_log_file() = default;
    ~command_log_file() override;

    // Points std::clog at this file's buffer, keeping std::clog's own buffer
    // for the destructor.
    void attach_clog();

  private:
    std::streambuf* clog_own_buffer = nullptr;
};

// Main thread only. Once enabled, logging stays on until the process ends.
extern bool command_log_enabled;
extern std::string command_log_file_name;
extern command_log_file command_log_stream;

void log_command(argument_list& args, command_queue& queue);
void enable_command_log(const std::string& file_name);
