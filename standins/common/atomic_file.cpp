#include "common/atomic_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>

namespace standin {

bool write_file_atomically(const std::string& path, std::string_view content, std::string& error) {
    // O_EXCL with a name of our own rather than mkstemp: the new file gets
    // the mode an ordinary file gets under the umask, without touching the
    // process-wide umask while other threads may create files.
    static std::atomic<unsigned> counter{0};
    std::string temp;
    int fd = -1;
    for (int attempt = 0; attempt < 100 && fd < 0; ++attempt) {
        temp = path + ".tmp-" + std::to_string(::getpid()) + "-" + std::to_string(counter++);
        fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd < 0 && errno != EEXIST) {
            break;
        }
    }
    if (fd < 0) {
        error = "cannot write " + path + ": " + std::strerror(errno);
        return false;
    }

    int failure = 0;
    size_t done = 0;
    while (done < content.size() && failure == 0) {
        const ssize_t n = ::write(fd, content.data() + done, content.size() - done);
        if (n < 0 && errno != EINTR) {
            failure = errno;
        } else if (n > 0) {
            done += static_cast<size_t>(n);
        }
    }
    if (::close(fd) != 0 && failure == 0) {
        failure = errno;
    }
    if (failure == 0 && ::rename(temp.c_str(), path.c_str()) != 0) {
        failure = errno;
    }
    if (failure != 0) {
        ::unlink(temp.c_str());
        error = "cannot write " + path + ": " + std::strerror(failure);
        return false;
    }
    return true;
}

}  // namespace standin
