#include "utilities/utracelog.h"

#include <cstdio>
#include <cstring>
#include <utility>

#include "utilities/utime.h"

namespace VX_UTL {

namespace {

// Flag letters by mask bit, lowest bit first.
constexpr char flag_letters[] = "MWFAE";
constexpr std::size_t flags_length = 6;  // Five letters or blanks, one blank.

// Ample for any time stamp; the message grows the buffer as it needs.
constexpr std::size_t initial_buffer_size = 1024;

const char* time_stamp_format(uint32_t mode) {
    switch (mode) {
        case 1:
            return "%m/%d/%y | ";
        case 2:
            return "%H:%M:%S:%s | ";
        case 3:
            return "%m/%d/%y %H:%M:%S:%s | ";
        default:
            return " ";
    }
}

bool is_line_end(char c) {
    return c == '\n' || c == '\r';
}

// Renders the message at `target` if it fits into `room` bytes; returns its
// length either way, or 0 for a format that can't be rendered.
std::size_t print_message(char* target, std::size_t room, const char* format, va_list arguments) {
    if (format == nullptr) {
        *target = '\0';
        return 0;
    }
    va_list copy;
    va_copy(copy, arguments);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    const int written = std::vsnprintf(target, room, format, copy);
#pragma GCC diagnostic pop
    va_end(copy);
    if (written < 0) {
        *target = '\0';
        return 0;
    }
    return static_cast<std::size_t>(written);
}

}  // namespace

uTraceLog::uTraceLog(std::string file_name, bool enabled, bool to_stdout, bool to_debugger,
                     bool append, int32_t gate)
    : log_file_name(std::move(file_name)),
      trace_enabled(enabled),
      echo_stdout(to_stdout),
      echo_debugger(to_debugger),
      append_mode(append),
      line_buffer(initial_buffer_size),
      trace_gate(gate) {}

uTraceLog::~uTraceLog() = default;

void uTraceLog::write(uint32_t mask, uint32_t mode, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    write_list(mask, mode, format, arguments);
    va_end(arguments);
}

void uTraceLog::write_list(uint32_t mask, uint32_t mode, const char* format, va_list arguments) {
    // The settings never change, so no second look is needed under the lock.
    if (!trace_enabled || mask == 0 || trace_gate == 0) {
        return;
    }
    const uMutexLock guard(log_lock);
    const std::size_t length = build_line(mask, mode, format, arguments);

    if (!file_opened) {
        // Binary: the file gets the line's bytes as they are, with the same
        // line ends on every platform.
        file_opened = log_file.open(log_file_name.c_str(), append_mode ? "a+b" : "w+b");
    }
    // A file that can't be opened loses the line; the echoes still happen.
    log_file.write(line_buffer.data(), length);
    log_file.flush();
    if (echo_stdout) {
        std::fwrite(line_buffer.data(), 1, length, stdout);
        std::fflush(stdout);
    }
    if (echo_debugger) {
        uDebugChannel::output(line_buffer.data());
    }
}

std::size_t uTraceLog::build_line(uint32_t mask, uint32_t mode, const char* format,
                                  va_list arguments) {
    char* line = line_buffer.data();
    for (std::size_t bit = 0; bit < 5; ++bit) {
        line[bit] = (mask & (1u << bit)) != 0 ? flag_letters[bit] : ' ';
    }
    line[5] = ' ';
    line[flags_length] = '\0';

    // The object's snapshot is taken under log_lock, so no other line's
    // moment can slip in before the format.
    const uTime now;
    // The buffer never shrinks below its first size, which any stamp fits.
    now.format(line + flags_length, static_cast<int32_t>(initial_buffer_size - flags_length),
               time_stamp_format(mode));
    const std::size_t prefix = flags_length + std::strlen(line + flags_length);

    // Room is kept for the line feed added below.
    std::size_t room = line_buffer.size() - prefix - 1;
    std::size_t message_length = print_message(line + prefix, room, format, arguments);
    if (message_length >= room) {
        line_buffer.resize(prefix + message_length + 2);
        line = line_buffer.data();
        room = line_buffer.size() - prefix - 1;
        message_length = print_message(line + prefix, room, format, arguments);
    }

    // One line end goes: LF, CR, or the two in either order.
    char* message = line + prefix;
    if (message_length > 0 && is_line_end(message[message_length - 1])) {
        const char last = message[--message_length];
        if (message_length > 0 && is_line_end(message[message_length - 1]) &&
            message[message_length - 1] != last) {
            --message_length;
        }
    }
    message[message_length] = '\n';
    message[message_length + 1] = '\0';
    return prefix + message_length + 1;
}

}  // namespace VX_UTL
