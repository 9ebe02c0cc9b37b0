#include <sys/stat.h>
#include <syslog.h>

#include "utilities/ufile.h"

namespace VX_UTL {

uFile::~uFile() {
    if (stream != nullptr) {
        std::fclose(stream);
    }
}

bool uFile::open(const char* name, const char* new_mode) {
    const uMutexLock guard(file_lock);
    if (stream != nullptr) {
        std::fclose(stream);
        stream = nullptr;
    }
    if (name != nullptr) {
        file_name = name;
    } else {
        file_name.clear();
    }
    mode = new_mode;
    // POSIX streams take no share lock: other programs may read and write
    // the file while it is open, as the share flag allows elsewhere.
    if (name != nullptr && mode != nullptr) {
        stream = std::fopen(name, mode);
    }
    is_open = stream != nullptr;
    return is_open;
}

std::size_t uFile::write(const void* data, std::size_t count) {
    const uMutexLock guard(file_lock);
    if (!is_open || data == nullptr) {
        return 0;
    }
    return std::fwrite(data, 1, count, stream);
}

bool uFile::flush() {
    const uMutexLock guard(file_lock);
    if (!is_open) {
        return false;
    }
    return std::fflush(stream) == 0;
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
