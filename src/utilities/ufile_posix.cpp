#include <fcntl.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include "utilities/ufile.h"

namespace VX_UTL {

// POSIX streams take no share lock: other programs may read and write the
// file while it is open, as the share flag allows elsewhere.
std::FILE* uFile::open_shared(const char* name, const char* mode) {
    return std::fopen(name, mode);
}

std::FILE* open_file_for_reading(const char* name) {
    // Without O_NONBLOCK, opening a FIFO waits for a writer.
    const int descriptor = open(name, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        return nullptr;
    }
    struct stat status {};
    const bool readable = fstat(descriptor, &status) == 0 && !S_ISDIR(status.st_mode) &&
                          !S_ISFIFO(status.st_mode) && !S_ISSOCK(status.st_mode);
    const int flags = readable ? fcntl(descriptor, F_GETFL) : -1;
    std::FILE* file = flags != -1 && fcntl(descriptor, F_SETFL, flags & ~O_NONBLOCK) == 0
                          ? fdopen(descriptor, "r")
                          : nullptr;
    if (file == nullptr) {
        close(descriptor);
    }
    return file;
}

namespace uDebugChannel {

void output(const char* text) {
    if (text != nullptr) {
        syslog(LOG_DEBUG, "%s", text);
    }
}

}  // namespace uDebugChannel

}  // namespace VX_UTL
