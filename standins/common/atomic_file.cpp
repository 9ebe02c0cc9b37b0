#include "common/atomic_file.h"

#include <cerrno>
#include <cstring>

namespace standin {

bool write_file_atomically(const std::string& path, std::string_view content, std::string& error) {
    temp_file temp = create_temp_beside(path);
    if (temp.file == no_file) {
        error = "cannot write " + path + ": " + std::strerror(errno);
        return false;
    }
    size_t done = 0;
    int failure = write_all(temp.file, content, done) ? 0 : errno;
    file_handle none = no_file;
    if (failure == 0 && !publish_temp(temp, path, none)) {
        failure = errno;
    }
    if (failure == 0) {
        const file_handle file = temp.file;
        temp.file = no_file;
        if (!close_file(file)) {
            failure = errno;  // In place already: only the error is left to tell.
        }
    }
    discard_temp(temp);
    if (failure != 0) {
        error = "cannot write " + path + ": " + std::strerror(failure);
        return false;
    }
    return true;
}

}  // namespace standin
