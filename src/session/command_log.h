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
    // Opens `name` unless a file is held already, or `name` is a FIFO, which
    // would keep the open waiting; a refusal only sets the fail bit.
    void open_unless_waiting(const std::string& name);
    // The name of the file held, or empty.
    const std::string& file_in_use() const { return held_name; }

  private:
    std::streambuf* clog_own_buffer = nullptr;
    std::string held_name;
};

// Main thread only. Once enabled, logging stays on until the process ends.
extern bool command_log_enabled;
extern std::string command_log_file_name;
extern command_log_file command_log_stream;

void log_command(argument_list& args, command_queue& queue);
// `refused`: the file is not opened, as if the open had failed.
void enable_command_log(const std::string& file_name, bool refused = false);
