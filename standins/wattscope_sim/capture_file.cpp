#include "wattscope_sim/capture_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <mutex>
#include <set>
#include <utility>

namespace standin::sim {

namespace {

constexpr size_t default_capacity = 512 * 1024;
// What a rewrite leaves to the writing thread to copy: a few milliseconds.
constexpr uint64_t catch_up_bytes = 4 * 1024 * 1024;
constexpr uint64_t copy_step = 8 * 1024 * 1024;

// The regular files that captures of this process write, by device and inode:
// two use cases of one line must not write into one file.
std::mutex outputs_mutex;
std::set<std::pair<uint64_t, uint64_t>> outputs;  // Guarded by outputs_mutex.

bool claim(uint64_t device, uint64_t inode) {
    std::lock_guard<std::mutex> lock(outputs_mutex);
    return outputs.insert({device, inode}).second;
}

void release(uint64_t device, uint64_t inode) {
    std::lock_guard<std::mutex> lock(outputs_mutex);
    outputs.erase({device, inode});
}

// Appends bytes `from` to `to` of `in` to `out`, in the kernel where it can.
bool copy_range(int in, int out, uint64_t from, uint64_t to, const std::atomic<bool>* cancel) {
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
            got = ::copy_file_range(in, &offset, out, nullptr, want, 0);
            if (got < 0 && errno != EINTR && errno != ENOSPC && errno != EIO) {
                in_kernel = false;  // Not between these files: copy through memory.
                continue;
            }
        } else {
            static thread_local char chunk[65536];
            got = ::pread(in, chunk, std::min(want, sizeof chunk), static_cast<off_t>(from));
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

}  // namespace

struct capture_file::rewrite_job {
    temp_file temp;
    uint64_t head = 0;
    uint64_t cut = 0;
    uint64_t copied_to = 0;  // Of the old file, once `done`.
    std::atomic<bool> done{false};
    std::atomic<bool> cancel{false};
    int failure = 0;  // Written by the worker before `done`.
    std::thread worker;

    void copy(int from_fd, uint64_t head_end, uint64_t from, uint64_t to) {
        done.store(false);
        worker = std::thread([this, from_fd, head_end, from, to] {
            const bool ok = copy_range(from_fd, temp.fd, 0, head_end, &cancel) &&
                            copy_range(from_fd, temp.fd, from, to, &cancel);
            failure = ok ? 0 : errno;
            copied_to = to;
            done.store(true, std::memory_order_release);
        });
    }
};

capture_file::capture_file() = default;

capture_file::~capture_file() {
    cancel_rewrite();
    if (fd_ >= 0) {
        ::close(fd_);
        if (regular_) {
            release(device_, inode_);
        }
    }
}

bool capture_file::fail(const std::string& what, int error_number) {
    error_ = what + ": " + std::strerror(error_number);
    return false;
}

bool capture_file::open(const std::string& path, std::string& error) {
    path_ = path;
    // Not truncated yet, and not blocking: a FIFO would wait in open() for a
    // reader where no stop reaches, and a file of another capture must stay whole.
    const int fd =
        path.empty() ? -1 : ::open(path.c_str(), O_RDWR | O_CREAT | O_NONBLOCK | O_CLOEXEC, 0666);
    if (fd < 0) {
        error = "cannot create output file '" + path +
                "': " + std::strerror(path.empty() ? ENOENT : errno);
        return false;
    }
    struct stat info {};
    if (::fstat(fd, &info) != 0 || !(S_ISREG(info.st_mode) || S_ISCHR(info.st_mode))) {
        ::close(fd);
        error = "the output file '" + path + "' is neither a regular file nor a character device";
        return false;
    }
    regular_ = S_ISREG(info.st_mode);
    if (regular_ && !claim(info.st_dev, info.st_ino)) {
        ::close(fd);
        error = "the output file '" + path + "' is already the output of another capture";
        return false;
    }
    fd_ = fd;
    inode_ = info.st_ino;
    device_ = info.st_dev;
    if (::fcntl(fd_, F_SETFL, 0) != 0 || (regular_ && ::ftruncate(fd_, 0) != 0)) {
        error = "cannot create output file '" + path + "': " + std::strerror(errno);
        return false;
    }
    capacity_ = default_capacity;
    buffer_ = std::make_unique<char[]>(capacity_);
    return true;
}

char* capture_file::space(size_t bytes) {
    if (pending_ + bytes > capacity_) {
        capacity_ = pending_ + bytes;
        auto bigger = std::make_unique<char[]>(capacity_);
        std::memcpy(bigger.get(), buffer_.get(), pending_);
        buffer_ = std::move(bigger);
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
    if (whole != done && regular_) {
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

bool capture_file::replace_with(temp_file& temp, uint64_t head, uint64_t cut) {
    struct stat info {};
    if (::fstat(temp.fd, &info) != 0 || !publish_temp(temp, path_) ||
        ::lseek(temp.fd, 0, SEEK_END) < 0) {
        const int reason = errno;
        discard_temp(temp);
        return fail("cannot rewrite " + path_, reason);
    }
    ::close(fd_);
    release(device_, inode_);
    claim(info.st_dev, info.st_ino);
    fd_ = temp.fd;
    temp.fd = -1;
    inode_ = info.st_ino;
    device_ = info.st_dev;
    written_ = head + (written_ - cut);
    return true;
}

bool capture_file::drop_range(uint64_t head, uint64_t cut) {
    cancel_rewrite();
    temp_file temp = create_temp_beside(path_);
    if (temp.fd < 0 || !copy_range(fd_, temp.fd, 0, head, nullptr) ||
        !copy_range(fd_, temp.fd, cut, written_, nullptr)) {
        const int reason = errno != 0 ? errno : EIO;
        discard_temp(temp);
        return fail("cannot rewrite " + path_, reason);
    }
    return replace_with(temp, head, cut);
}

bool capture_file::start_rewrite(uint64_t head, uint64_t cut) {
    cancel_rewrite();
    auto job = std::make_unique<rewrite_job>();
    job->temp = create_temp_beside(path_);
    if (job->temp.fd < 0) {
        return fail("cannot rewrite " + path_, errno);
    }
    job->head = head;
    job->cut = cut;
    job->copy(fd_, head, cut, written_);
    job_ = std::move(job);
    return true;
}

bool capture_file::poll_rewrite(bool& replaced) {
    replaced = false;
    if (!job_ || !job_->done.load(std::memory_order_acquire)) {
        return true;
    }
    job_->worker.join();
    if (job_->failure != 0) {
        const int reason = job_->failure;
        cancel_rewrite();
        return fail("cannot rewrite " + path_, reason);
    }
    if (written_ - job_->copied_to > catch_up_bytes) {
        job_->copy(fd_, 0, job_->copied_to, written_);  // Another round, shorter each time.
        return true;
    }
    std::unique_ptr<rewrite_job> job = std::move(job_);
    if (!copy_range(fd_, job->temp.fd, job->copied_to, written_, nullptr)) {
        const int reason = errno;
        discard_temp(job->temp);
        return fail("cannot rewrite " + path_, reason);
    }
    replaced = replace_with(job->temp, job->head, job->cut);
    return replaced;
}

void capture_file::cancel_rewrite() {
    if (!job_) {
        return;
    }
    job_->cancel.store(true);
    if (job_->worker.joinable()) {
        job_->worker.join();
    }
    discard_temp(job_->temp);
    job_.reset();
}

}  // namespace standin::sim
