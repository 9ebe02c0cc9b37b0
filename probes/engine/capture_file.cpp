#include "engine/capture_file.h"

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

// The regular files that captures of this process write, by their identity:
// two use cases of one line must not write into one file.
std::mutex outputs_mutex;
std::set<file_identity> outputs;  // Guarded by outputs_mutex.

bool claim(const file_identity& identity) {
    std::lock_guard<std::mutex> lock(outputs_mutex);
    return outputs.insert(identity).second;
}

void release(const file_identity& identity) {
    std::lock_guard<std::mutex> lock(outputs_mutex);
    outputs.erase(identity);
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

    void copy(file_handle source, uint64_t head_end, uint64_t from, uint64_t to) {
        done.store(false);
        worker = std::thread([this, source, head_end, from, to] {
            const bool ok = copy_range(source, temp.file, 0, head_end, &cancel) &&
                            copy_range(source, temp.file, from, to, &cancel);
            failure = ok ? 0 : errno;
            copied_to = to;
            done.store(true, std::memory_order_release);
        });
    }
};

capture_file::capture_file() = default;

capture_file::~capture_file() {
    cancel_rewrite();
    if (file_ != no_file) {
        close_file(file_);
    }
    if (claimed_) {
        release(identity_);
    }
}

bool capture_file::fail(const std::string& what, int error_number) {
    error_ = what + ": " + std::strerror(error_number);
    return false;
}

bool capture_file::open(const std::string& path, std::string& error) {
    path_ = path;
    // Not truncated yet: a file of another capture must stay whole.
    file_kind kind = file_kind::other;
    const file_handle file = path.empty() ? no_file : open_for_output(path, kind);
    if (file == no_file) {
        error = "cannot create output file '" + path +
                "': " + std::strerror(path.empty() ? ENOENT : errno);
        return false;
    }
    file_identity identity;  // Only a regular file has one worth comparing.
    if (!(kind == file_kind::character ||
          (kind == file_kind::regular && identity_of(file, identity)))) {
        close_file(file);
        error = "the output file '" + path + "' is neither a regular file nor a character device";
        return false;
    }
    regular_ = kind == file_kind::regular;
    if (regular_ && !claim(identity)) {
        close_file(file);
        error = "the output file '" + path + "' is already the output of another capture";
        return false;
    }
    file_ = file;
    identity_ = identity;
    claimed_ = regular_;
    capacity_ = default_capacity;
    buffer_ = std::make_unique<char[]>(capacity_);
    return true;
}

bool capture_file::begin() {
    return !regular_ || truncate_file(file_, 0) || fail("cannot empty " + path_, errno);
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
    const bool ok = write_all(file_, std::string_view(buffer_.get(), pending_), done);
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
        static_cast<void>(truncate_file(file_, written_));
    }
    return fail("cannot write " + path_, reason);
}

bool capture_file::still_there() {
    if (!regular_) {
        return true;  // A device's name is the system's; Windows gives NUL no identity.
    }
    file_identity named;
    if (!has_name(file_) || !identity_of(path_, named) || named != identity_) {
        error_ = path_ + " was removed or replaced during the capture";
        return false;
    }
    return true;
}

size_t capture_file::read_at(uint64_t offset, char* into, size_t count) const {
    const int64_t n = standin::read_at(file_, offset, into, count);
    return n > 0 ? static_cast<size_t>(n) : 0;
}

bool capture_file::replace_with(temp_file& temp, uint64_t head, uint64_t cut) {
    file_identity identity;
    if (!identity_of(temp.file, identity) || !publish_temp(temp, path_, file_)) {
        const int reason = errno;
        discard_temp(temp);
        return fail("cannot rewrite " + path_, reason);
    }
    release(identity_);
    claim(identity);
    file_ = temp.file;
    temp.file = no_file;
    identity_ = identity;
    written_ = head + (written_ - cut);
    return true;
}

bool capture_file::drop_range(uint64_t head, uint64_t cut) {
    cancel_rewrite();
    temp_file temp = create_temp_beside(path_);
    if (temp.file == no_file || !copy_range(file_, temp.file, 0, head, nullptr) ||
        !copy_range(file_, temp.file, cut, written_, nullptr)) {
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
    if (job->temp.file == no_file) {
        return fail("cannot rewrite " + path_, errno);
    }
    job->head = head;
    job->cut = cut;
    job->copy(file_, head, cut, written_);
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
        job_->copy(file_, 0, job_->copied_to, written_);  // Another round, shorter each time.
        return true;
    }
    std::unique_ptr<rewrite_job> job = std::move(job_);
    if (!copy_range(file_, job->temp.file, job->copied_to, written_, nullptr)) {
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
