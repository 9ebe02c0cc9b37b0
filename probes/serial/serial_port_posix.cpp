#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <mutex>

#include "serial/serial_port.h"

namespace probes {

namespace {

using clock = std::chrono::steady_clock;

// Why a file that is not a terminal device can't be a port, or empty.
std::string kind_refusal(mode_t mode) {
    if (S_ISCHR(mode)) {
        return "";
    }
    if (S_ISREG(mode)) {
        return "it is a regular file, not a serial port";
    }
    if (S_ISDIR(mode)) {
        return "it is a directory, not a serial port";
    }
    if (S_ISFIFO(mode)) {
        return "it is a FIFO, not a serial port";
    }
    if (S_ISSOCK(mode)) {
        return "it is a socket, not a serial port";
    }
    return S_ISBLK(mode) ? "it is a block device, not a serial port" : "it is not a serial port";
}

// Milliseconds left until `deadline` for poll(); -1 (no limit) stays -1.
int remaining_ms(int timeout_ms, clock::time_point deadline) {
    if (timeout_ms < 0) {
        return -1;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - clock::now()).count();
    return left > 0 ? static_cast<int>(left) : 0;
}

bool is_gone(int error) {
    return error == EIO || error == ENXIO || error == ENODEV;
}

// Owns the port's descriptor and a pipe whose readable end wakes a waiting
// read. read() runs on one thread (the reader), write() on another, and
// interrupt() and error() on any: the error text is guarded.
class posix_serial_port final : public byte_port {
  public:
    posix_serial_port(std::string name, int fd, int wake_read, int wake_write)
        : name_(std::move(name)), fd_(fd), wake_read_(wake_read), wake_write_(wake_write) {}

    ~posix_serial_port() override {
        ::close(fd_);
        ::close(wake_read_);
        ::close(wake_write_);
    }

    std::ptrdiff_t read(void* into, size_t size, int timeout_ms) override {
        const auto deadline = clock::now() + std::chrono::milliseconds(timeout_ms);
        while (!interrupted_.load()) {
            pollfd waits[2] = {{fd_, POLLIN, 0}, {wake_read_, POLLIN, 0}};
            const int ready = ::poll(waits, 2, remaining_ms(timeout_ms, deadline));
            if (ready < 0 && errno != EINTR) {
                return fail("can't read from the port '" + name_ + "': " + std::strerror(errno));
            }
            if (ready == 0) {
                return 0;
            }
            if (ready < 0 || waits[1].revents != 0) {
                continue;
            }
            if (waits[0].revents & POLLNVAL) {
                return fail("can't read from the port '" + name_ + "': it is closed");
            }
            // After a hang-up read() still hands over what came before it.
            const ssize_t got = ::read(fd_, into, size);
            if (got > 0) {
                return got;
            }
            if (got == 0 || is_gone(errno)) {
                return fail("the port '" + name_ + "' is gone");
            }
            if (errno != EAGAIN && errno != EINTR) {
                return fail("can't read from the port '" + name_ + "': " + std::strerror(errno));
            }
        }
        return 0;
    }

    bool write(const void* data, size_t size) override {
        const auto* bytes = static_cast<const unsigned char*>(data);
        auto deadline = clock::now() + std::chrono::milliseconds(serial_write_limit_ms);
        while (size > 0) {
            const ssize_t put = ::write(fd_, bytes, size);
            if (put > 0) {
                bytes += put;
                size -= static_cast<size_t>(put);
                deadline = clock::now() + std::chrono::milliseconds(serial_write_limit_ms);
                continue;
            }
            if (put < 0 && errno != EAGAIN && errno != EINTR) {
                fail(is_gone(errno)
                         ? "the port '" + name_ + "' is gone"
                         : "can't write to the port '" + name_ + "': " + std::strerror(errno));
                return false;
            }
            pollfd wait = {fd_, POLLOUT, 0};
            const int ready = ::poll(&wait, 1, remaining_ms(serial_write_limit_ms, deadline));
            if (ready == 0) {
                fail("can't write to the port '" + name_ + "': the device takes no data");
                return false;
            }
        }
        return true;
    }

    void interrupt() override {
        interrupted_.store(true);
        const char wake = 1;
        // The pipe is never drained: one byte wakes every later wait too, and
        // a full pipe already wakes them.
        [[maybe_unused]] const ssize_t ignored = ::write(wake_write_, &wake, 1);
    }

    std::string error() const override {
        std::lock_guard lock(error_lock_);
        return error_;
    }

  private:
    std::ptrdiff_t fail(std::string text) {
        std::lock_guard lock(error_lock_);
        error_ = std::move(text);
        return -1;
    }

    const std::string name_;
    const int fd_;
    const int wake_read_;
    const int wake_write_;
    std::atomic<bool> interrupted_{false};
    mutable std::mutex error_lock_;
    std::string error_;  // Guarded by error_lock_.
};

// Raw 8-bit bytes with no translation, echo or signals; the receiver on and
// the modem lines ignored, which pseudo-terminals don't have.
bool set_raw(int fd) {
    termios settings{};
    if (::tcgetattr(fd, &settings) != 0) {
        return false;
    }
    ::cfmakeraw(&settings);
    settings.c_cflag |= CLOCAL | CREAD;
    settings.c_cflag &= ~(CSTOPB | CRTSCTS);
    settings.c_iflag &= ~(IXON | IXOFF | IXANY);
    settings.c_cc[VMIN] = 0;
    settings.c_cc[VTIME] = 0;
    return ::tcsetattr(fd, TCSANOW, &settings) == 0;
}

}  // namespace

std::unique_ptr<byte_port> open_serial_port(const std::string& name, std::string& error) {
    const std::string refusal = "can't open the port '" + name + "': ";
    // Refused before open(), which may have effects on a device.
    struct stat info {};
    if (::stat(name.c_str(), &info) == 0 && !kind_refusal(info.st_mode).empty()) {
        error = refusal + kind_refusal(info.st_mode);
        return nullptr;
    }
    // Not blocking, so that a port waiting for its carrier can't hold up
    // open(); poll() does the waiting from then on.
    const int fd = ::open(name.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) {
        error = refusal + (name.empty() ? std::strerror(ENOENT) : std::strerror(errno));
        return nullptr;
    }
    auto fail = [&](std::string reason) -> std::unique_ptr<byte_port> {
        ::close(fd);
        error = refusal + reason;
        return nullptr;
    };
    if (::fstat(fd, &info) != 0) {
        return fail(std::strerror(errno));
    }
    if (!kind_refusal(info.st_mode).empty()) {
        return fail(kind_refusal(info.st_mode));
    }
    if (!::isatty(fd)) {
        return fail("it is not a terminal device");
    }
    // One user at a time, within this process too: a second session on the
    // same port would read half of the other's bytes.
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        return fail("it is already in use");
    }
    if (!set_raw(fd)) {
        return fail(std::strerror(errno));
    }
    int wake[2];
    if (::pipe2(wake, O_CLOEXEC | O_NONBLOCK) != 0) {
        return fail(std::strerror(errno));
    }
    return std::make_unique<posix_serial_port>(name, fd, wake[0], wake[1]);
}

}  // namespace probes
