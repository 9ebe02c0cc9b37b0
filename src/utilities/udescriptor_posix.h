#pragma once

// Reads and writes on a POSIX descriptor, shared by the utilities' platform
// files.

#include <unistd.h>

#include <cerrno>
#include <string_view>

namespace VX_UTL {

// All of `text`, retrying after a signal; false on any other failure.
inline bool write_all(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(file, text.data(), text.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

// Up to `room` bytes, retrying after a signal; 0 at the end, -1 on failure.
inline ssize_t read_some(int file, char* into, std::size_t room) {
    for (;;) {
        const ssize_t count = read(file, into, room);
        if (count >= 0 || errno != EINTR) {
            return count;
        }
    }
}

}  // namespace VX_UTL
