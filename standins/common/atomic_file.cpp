#include "common/atomic_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>

namespace standin {

int create_temp_beside(const std::string& path, std::string& temp) {
    // O_EXCL with a name of our own rather than mkstemp: the new file gets
    // the mode an ordinary file gets under the umask, without touching the
    // process-wide umask while other threads may create files.
    static std::atomic<unsigned> counter{0};
    int fd = -1;
    for (int attempt = 0; attempt < 100 && fd < 0; ++attempt) {
        temp = path + ".tmp-" + std::to_string(::getpid()) + "-" + std::to_string(counter++);
        fd = ::open(temp.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd < 0 && errno != EEXIST) {
            break;
        }
    }
    return fd;
}

bool write_all(int fd, std::string_view data, size_t& done) {
    done = 0;
    while (done < data.size()) {
        const ssize_t n = ::write(fd, data.data() + done, data.size() - done);
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            errno = n == 0 ? EIO : errno;  // A write that takes nothing would loop forever.
            return false;
        }
        done += static_cast<size_t>(n);
    }
    return true;
}

bool write_file_atomically(const std::string& path, std::string_view content, std::string& error) {
    std::string temp;
    const int fd = create_temp_beside(path, temp);
    if (fd < 0) {
        error = "cannot write " + path + ": " + std::strerror(errno);
        return false;
    }
    size_t done = 0;
    int failure = write_all(fd, content, done) ? 0 : errno;
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
