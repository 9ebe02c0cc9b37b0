#include "wattscope_sim/capture_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "common/atomic_file.h"

namespace standin::sim {

namespace {

constexpr size_t default_capacity = 512 * 1024;

}  // namespace

capture_file::~capture_file() {
    if (fd_ >= 0) {
        ::close(fd_);
    }
}

bool capture_file::fail(const std::string& what, int error_number) {
    error_ = what + ": " + std::strerror(error_number);
    return false;
}

bool capture_file::open(const std::string& path, std::string& error) {
    path_ = path;
    fd_ = path.empty() ? -1 : ::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd_ < 0) {
        error = "cannot create output file '" + path +
                "': " + std::strerror(path.empty() ? ENOENT : errno);
        return false;
    }
    struct stat info {};
    if (::fstat(fd_, &info) == 0) {
        inode_ = info.st_ino;
        device_ = info.st_dev;
    }
    capacity_ = default_capacity;
    buffer_ = std::make_unique<char[]>(capacity_);
    return true;
}

char* capture_file::space(size_t bytes) {
    if (pending_ + bytes > capacity_) {
        if (!flush()) {
            return nullptr;
        }
        if (bytes > capacity_) {
            capacity_ = bytes;
            buffer_ = std::make_unique<char[]>(capacity_);
        }
    }
    return buffer_.get() + pending_;
}

bool capture_file::flush() {
    if (pending_ == 0) {
        return true;
    }
    size_t done = 0;
    const bool ok = write_all(fd_, std::string_view(buffer_.get(), pending_), done);
    if (ok) {
        written_ += done;
        pending_ = 0;
        return true;
    }
    const int reason = errno;
    // Keep the rows that reached the file whole; cut a torn one.
    size_t whole = done;
    while (whole > 0 && buffer_[whole - 1] != '\n') {
        --whole;
    }
    written_ += whole;
    pending_ = 0;
    if (whole != done) {
        static_cast<void>(::ftruncate(fd_, static_cast<off_t>(written_)));
    }
    return fail("cannot write " + path_, reason);
}

bool capture_file::still_there() {
    struct stat opened {};
    struct stat named {};
    if (::fstat(fd_, &opened) != 0 || opened.st_nlink == 0 || ::stat(path_.c_str(), &named) != 0 ||
        named.st_ino != inode_ || named.st_dev != device_) {
        error_ = path_ + " was removed or replaced during the capture";
        return false;
    }
    return true;
}

size_t capture_file::read_at(uint64_t offset, char* into, size_t count) const {
    const ssize_t n = ::pread(fd_, into, count, static_cast<off_t>(offset));
    return n > 0 ? static_cast<size_t>(n) : 0;
}

bool capture_file::drop_range(uint64_t head, uint64_t cut) {
    if (!flush()) {
        return false;
    }
    std::string temp;
    const int out = create_temp_beside(path_, temp);
    if (out < 0) {
        return fail("cannot rewrite " + path_, errno);
    }
    auto copy = [&](uint64_t from, uint64_t to) {
        char chunk[65536];
        while (from < to) {
            const size_t want =
                static_cast<size_t>(to - from < sizeof chunk ? to - from : sizeof chunk);
            const size_t got = read_at(from, chunk, want);
            size_t done = 0;
            if (got == 0 || !write_all(out, std::string_view(chunk, got), done)) {
                return false;
            }
            from += got;
        }
        return true;
    };
    if (!copy(0, head) || !copy(cut, written_)) {
        const int reason = errno != 0 ? errno : EIO;
        ::close(out);
        ::unlink(temp.c_str());
        return fail("cannot rewrite " + path_, reason);
    }
    struct stat info {};
    if (::fstat(out, &info) != 0 || ::rename(temp.c_str(), path_.c_str()) != 0) {
        const int reason = errno;
        ::close(out);
        ::unlink(temp.c_str());
        return fail("cannot rewrite " + path_, reason);
    }
    ::close(fd_);
    fd_ = out;
    inode_ = info.st_ino;
    device_ = info.st_dev;
    written_ = head + (written_ - cut);
    return true;
}

}  // namespace standin::sim
