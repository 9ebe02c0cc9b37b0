#pragma once

#include <cstdarg>
#include <cstdint>
#include <string>
#include <vector>

#include "utilities/ufile.h"
#include "utilities/umutex.h"

namespace VX_UTL {

// Diagnostic lines with flag letters and a time stamp, to a file and at will
// to standard output and the platform's debug channel. Created with its
// settings by its owner, who installs it in the trace registry; the file is
// opened by the first line and closed when the object is destroyed.
class uTraceLog {
  public:
    uTraceLog(std::string log_file_name, bool trace_enabled, bool echo_stdout, bool echo_debugger,
              bool append_mode, int32_t trace_gate);
    ~uTraceLog();
    uTraceLog(const uTraceLog&) = delete;
    uTraceLog& operator=(const uTraceLog&) = delete;

    // mask: bits 1 M, 2 W, 4 F, 8 A, 16 E. mode: time stamp 0 none, 1 date,
    // 2 time, 3 both.
    void write(uint32_t mask, uint32_t mode, const char* format, ...)
        __attribute__((format(printf, 4, 5)));
    void write_list(uint32_t mask, uint32_t mode, const char* format, va_list arguments);

  private:
    // Builds the line in line_buffer; returns its length, line end included.
    std::size_t build_line(uint32_t mask, uint32_t mode, const char* format, va_list arguments);

    uFile log_file;  // Guarded by log_lock, and by its own lock inside.
    // The settings are fixed at construction and read without a lock.
    const std::string log_file_name;
    const bool trace_enabled;
    const bool echo_stdout;
    const bool echo_debugger;
    const bool append_mode;    // "a+" keeps the file's content, "w+" empties it.
    bool file_opened = false;  // Guarded by log_lock; stays true once set.
    // Held for the whole of one line; taken before log_file's lock, never
    // after it.
    uMutex log_lock;
    // The one buffer each line is built in, grown to fit the longest line so
    // far. Guarded by log_lock.
    std::vector<char> line_buffer;
    const int32_t trace_gate;  // 0 writes nothing.
};

}  // namespace VX_UTL
