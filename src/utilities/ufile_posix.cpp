#include <sys/stat.h>
#include <syslog.h>

#include "utilities/ufile.h"

namespace VX_UTL {

// POSIX streams take no share lock: other programs may read and write the
// file while it is open, as the share flag allows elsewhere.
std::FILE* uFile::open_shared(const char* name, const char* mode) {
    return std::fopen(name, mode);
}

std::FILE* open_file_for_reading(const char* name) {
    std::FILE* file = std::fopen(name, "r");
    struct stat status {};
    if (file != nullptr && fstat(fileno(file), &status) == 0 && S_ISDIR(status.st_mode)) {
        std::fclose(file);
        return nullptr;
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
