#pragma once

#include <cstdarg>
#include <cstdint>
#include <string>

#include "utilities/ufile.h"
#include "utilities/umutex.h"

namespace VX_UTL {

// Diagnostic lines with flag letters and a time stamp, to a file and at will
// to standard output and the platform's debug channel. Created with its
// settings by its owner, who installs it in the trace registry; the file is
// opened by the first line and closed when the object is destroyed.
class uTraceLog {
public:
    uTraceLog(std::string log_file_name, bool trace_enabled, bool echo_stdout,
              bool echo_debugger, bool append_mode, int32_t trace_gate);
    ~uTraceLog();
    uTraceLog(const uTraceLog&) = delete;
    uTraceLog& operator=(const uTraceLog&) = delete;

    // mask: bits 1 M, 2 W, 4 F, 8 A, 16 E. mode: time stamp 0 none, 1 date,
    // 2 time, 3 both.
    void write(uint32_t mask, uint32_t mode, const char* format, ...)
        __attribute__((format(printf, 4, 5)));
    void write_list(uint32_t mask, uint32_t mode, const char* format, va_list arguments);
};

}  // namespace VX_UTL
