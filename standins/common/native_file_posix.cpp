#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "common/native_file.h"

namespace standin {

namespace {

constexpr uint64_t copy_step = 8 * 1024 * 1024;

int fd_of(file_handle file) {
    return static_cast<int>(file);
}

file_kind kind_of(const struct stat& info) {
    if (S_ISREG(info.st_mode)) {
        return file_kind::regular;
    }
    if (S_ISCHR(info.st_mode)) {
        return file_kind::character;
    }
    return S_ISDIR(info.st_mode) ? file_kind::directory : file_kind::other;
}

file_handle open_checked(const std::string& path, int flags, file_kind& kind) {
    const int fd = ::open(path.c_str(), flags | O_NONBLOCK | O_CLOEXEC, 0666);
    if (fd < 0) {
        return no_file;
    }
    struct stat info {};
    // Blocking again, now that open() can no longer wait.
    if (::fstat(fd, &info) != 0 || ::fcntl(fd, F_SETFL, 0) != 0) {
        const int reason = errno;
        ::close(fd);
        errno = reason;
        return no_file;
    }
    kind = kind_of(info);
    return fd;
}

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

}  // namespace

file_handle open_for_output(const std::string& path, file_kind& kind) {
    return open_checked(path, O_RDWR | O_CREAT, kind);
}

file_handle open_for_input(const std::string& path, file_kind& kind) {
    return open_checked(path, O_RDONLY, kind);
}

bool close_file(file_handle file) {
    return ::close(fd_of(file)) == 0;
}

bool identity_of(file_handle file, file_identity& identity) {
    struct stat info {};
    if (::fstat(fd_of(file), &info) != 0) {
        return false;
    }
    identity = {info.st_dev, info.st_ino};
    return true;
}

bool identity_of(const std::string& path, file_identity& identity) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) {
        return false;
    }
    identity = {info.st_dev, info.st_ino};
    return true;
}

bool has_name(file_handle file) {
    struct stat info {};
    return ::fstat(fd_of(file), &info) == 0 && info.st_nlink > 0;
}

bool write_all(file_handle file, std::string_view data, size_t& done) {
    done = 0;
    while (done < data.size()) {
        const ssize_t n = ::write(fd_of(file), data.data() + done, data.size() - done);
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

int64_t read_some(file_handle file, char* into, size_t count) {
    ssize_t n = -1;
    do {
        n = ::read(fd_of(file), into, count);
    } while (n < 0 && errno == EINTR);
    return n;
}

int64_t read_at(file_handle file, uint64_t offset, char* into, size_t count) {
    ssize_t n = -1;
    do {
        n = ::pread(fd_of(file), into, count, static_cast<off_t>(offset));
    } while (n < 0 && errno == EINTR);
    return n;
}

bool truncate_file(file_handle file, uint64_t size) {
    return ::ftruncate(fd_of(file), static_cast<off_t>(size)) == 0;
}

bool copy_range(file_handle in, file_handle out, uint64_t from, uint64_t to,
                const std::atomic<bool>* cancel) {
    bool in_kernel = true;
    while (from < to) {
        if (cancel != nullptr && cancel->load(std::memory_order_relaxed)) {
            errno = ECANCELED;
            return false;
        }
        const auto want = static_cast<size_t>(std::min(to - from, copy_step));
        ssize_t got = -1;
        if (in_kernel) {
            auto offset = static_cast<off_t>(from);
            got = ::copy_file_range(fd_of(in), &offset, fd_of(out), nullptr, want, 0);
            if (got < 0 && errno != EINTR && errno != ENOSPC && errno != EIO) {
                in_kernel = false;  // Not between these files: copy through memory.
                continue;
            }
        } else {
            static thread_local char chunk[65536];
            got = read_at(in, from, chunk, std::min(want, sizeof chunk));
            size_t done = 0;
            if (got > 0 &&
                !write_all(out, std::string_view(chunk, static_cast<size_t>(got)), done)) {
                return false;
            }
        }
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            errno = got == 0 ? EIO : errno;
            return false;
        }
        from += static_cast<uint64_t>(got);
    }
    return true;
}

temp_file create_temp_beside(const std::string& path) {
    // open() with a mode rather than mkstemp: the new file gets the mode an
    // ordinary file gets under the umask, without touching the process-wide
    // umask while other threads may create files. Unnamed where the file
    // system allows, so that a process killed while writing it leaves
    // nothing behind.
    temp_file temp;
    temp.file = ::open(folder_of(path).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
    if (temp.file < 0 && (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL)) {
        temp.file = with_free_name(path, temp.name, [](const std::string& n) {
            return ::open(n.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        });
    }
    return temp;
}

bool publish_temp(temp_file& temp, const std::string& path, file_handle& replaced) {
    if (temp.name.empty()) {
        // A name only for the moment of the rename: a link can't replace a file.
        const std::string self = "/proc/self/fd/" + std::to_string(temp.file);
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
    if (replaced != no_file) {
        ::close(fd_of(replaced));
        replaced = no_file;
    }
    return ::lseek(fd_of(temp.file), 0, SEEK_END) >= 0;
}

void discard_temp(temp_file& temp) {
    if (temp.file >= 0) {
        ::close(fd_of(temp.file));
        temp.file = no_file;
    }
    if (!temp.name.empty()) {
        ::unlink(temp.name.c_str());
        temp.name.clear();
    }
}

void write_console(bool error_stream, std::string_view text) {
    size_t done = 0;
    write_all(error_stream ? STDERR_FILENO : STDOUT_FILENO, text, done);
}

}  // namespace standin
