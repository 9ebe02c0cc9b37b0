#pragma once

// The output file of a capture: rows gather in a buffer and go to the file
// in whole rows only, so that what the file holds is always valid however a
// capture ends. Owned by the capture's thread; only a rewrite's copy runs on
// a thread of its own (see start_rewrite).

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

#include "common/native_file.h"

namespace standin::sim {

class capture_file {
  public:
    capture_file();
    capture_file(const capture_file&) = delete;
    capture_file& operator=(const capture_file&) = delete;
    ~capture_file();

    // Creates the file if missing; an existing one is emptied by begin().
    // Refuses what is neither a regular file nor a character device, and a
    // file that another capture of this process writes.
    bool open(const std::string& path, std::string& error);
    // Empties the file, when the capture begins to write it: a capture that
    // never runs leaves it as it was. False, with error(), on failure.
    bool begin();

    // False for a character device, which can't be cut or rewritten.
    bool regular() const { return regular_; }

    bool has_room(size_t bytes) const { return pending_ + bytes <= capacity_; }
    // Room for `bytes` more behind the buffered text; has_room() must hold,
    // or the buffer be empty.
    char* space(size_t bytes);
    // Takes the text up to `end` (inside the last space()) into the buffer.
    void advance(const char* end) { pending_ = static_cast<size_t>(end - buffer_.get()); }

    uint64_t size() const { return written_ + pending_; }
    uint64_t written() const { return written_; }

    // Writes the buffer. On failure the file is cut back to its last whole
    // row, and error() tells why; the first `written() - before` bytes of
    // the buffer then are what reached the file (see buffered()).
    bool flush();
    std::string_view buffered(size_t bytes) const { return {buffer_.get(), bytes}; }

    // False, with error(), when the file was removed or replaced since open.
    bool still_there();

    // Rewrites the file as its first `head` bytes followed by everything
    // from `cut` on, through a temporary file put in its place, so that a
    // reader never sees half a file. On this thread; the buffer must be
    // flushed.
    bool drop_range(uint64_t head, uint64_t cut);

    // The same on another thread, while rows go on being written here:
    // start_rewrite() begins the copy; poll_rewrite() puts the new file in
    // place once the copy has nearly caught up with the writes, copying
    // only the last few MiB here. Both false, with error(), on failure.
    bool start_rewrite(uint64_t head, uint64_t cut);
    bool rewriting() const { return job_ != nullptr; }
    bool poll_rewrite(bool& replaced);
    void cancel_rewrite();

    // Reads written bytes at `offset`; returns how many.
    size_t read_at(uint64_t offset, char* into, size_t count) const;

    const std::string& error() const { return error_; }

  private:
    struct rewrite_job;

    bool fail(const std::string& what, int error_number);
    bool replace_with(temp_file& temp, uint64_t head, uint64_t cut);

    std::string path_;
    file_handle file_ = no_file;
    bool regular_ = true;
    file_identity identity_;
    bool claimed_ = false;  // identity_ is in the set of outputs.
    uint64_t written_ = 0;  // Bytes in the file.
    std::unique_ptr<char[]> buffer_;
    size_t capacity_ = 0;
    size_t pending_ = 0;  // Bytes in the buffer.
    std::unique_ptr<rewrite_job> job_;
    std::string error_;
};

}  // namespace standin::sim
