#include "common/atomic_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>

namespace standin {

namespace {

std::string folder_of(const std::string& path) {
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return slash == 0 ? "/" : path.substr(0, slash);
}

// Makes a new name beside `path` with `make`, which fails with EEXIST when
// the name is taken; -1 when no name could be made.
template <typename Make>
int with_free_name(const std::string& path, std::string& name, Make make) {
    static std::atomic<unsigned> counter{0};
    int result = -1;
    for (int attempt = 0; attempt < 100 && result < 0; ++attempt) {
        name = path + ".tmp-" + std::to_string(::getpid()) + "-" + std::to_string(counter++);
        result = make(name);
        if (result < 0 && errno != EEXIST) {
            break;
        }
    }
    if (result < 0) {
        name.clear();
    }
    return result;
}

int create_named(const std::string& path, std::string& name) {
    return with_free_name(path, name, [](const std::string& n) {
        return ::open(n.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    });
}

}  // namespace

temp_file create_temp_beside(const std::string& path) {
    // open() with a mode rather than mkstemp: the new file gets the mode an
    // ordinary file gets under the umask, without touching the process-wide
    // umask while other threads may create files.
    temp_file temp;
    temp.fd = ::open(folder_of(path).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
    if (temp.fd < 0 && (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL)) {
        temp.fd = create_named(path, temp.name);  // A file system without unnamed files.
    }
    return temp;
}

bool publish_temp(temp_file& temp, const std::string& path) {
    if (temp.name.empty()) {
        // A name only for the moment of the rename: a link can't replace a file.
        const std::string self = "/proc/self/fd/" + std::to_string(temp.fd);
        std::string name;
        if (with_free_name(path, name, [&](const std::string& n) {
                return ::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, n.c_str(), AT_SYMLINK_FOLLOW);
            }) < 0) {
            return false;
        }
        temp.name = name;
    }
    if (::rename(temp.name.c_str(), path.c_str()) != 0) {
        return false;
    }
    temp.name.clear();
    return true;
}

void discard_temp(temp_file& temp) {
    if (temp.fd >= 0) {
        ::close(temp.fd);
        temp.fd = -1;
    }
    if (!temp.name.empty()) {
        ::unlink(temp.name.c_str());
        temp.name.clear();
    }
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
    temp_file temp = create_temp_beside(path);
    if (temp.fd < 0) {
        error = "cannot write " + path + ": " + std::strerror(errno);
        return false;
    }
    size_t done = 0;
    int failure = write_all(temp.fd, content, done) ? 0 : errno;
    if (failure == 0 && !publish_temp(temp, path)) {
        failure = errno;
    }
    if (failure == 0) {
        const int fd = temp.fd;
        temp.fd = -1;
        if (::close(fd) != 0) {
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
