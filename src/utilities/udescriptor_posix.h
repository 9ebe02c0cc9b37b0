#pragma once

// Writes to a POSIX descriptor shared by the utilities' platform files.

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

}  // namespace VX_UTL
