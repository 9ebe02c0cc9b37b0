#pragma once

// The output file of a capture: rows gather in a buffer and go to the file
// in whole rows only, so that what the file holds is always valid however a
// capture ends. Used by the capture's thread alone.

#include <cstdint>
#include <memory>
#include <string>

namespace standin::sim {

class capture_file {
  public:
    capture_file() = default;
    capture_file(const capture_file&) = delete;
    capture_file& operator=(const capture_file&) = delete;
    ~capture_file();

    // Creates the file, or empties an existing one.
    bool open(const std::string& path, std::string& error);

    // Room for `bytes` more behind the buffered text, flushing first if the
    // buffer is too full; null when that flush failed.
    char* space(size_t bytes);
    // Takes the text up to `end` (inside the last space()) into the buffer.
    void advance(const char* end) { pending_ = static_cast<size_t>(end - buffer_.get()); }

    uint64_t size() const { return written_ + pending_; }

    // Writes the buffer. On failure the file is cut back to its last whole
    // row, and error() tells why.
    bool flush();

    // False, with error(), when the file was removed or replaced since open.
    bool still_there();

    // Rewrites the file as its first `head` bytes followed by everything
    // from `cut` on, through a temporary file renamed over the old one, so
    // that a reader never sees half a file. Flushes first.
    bool drop_range(uint64_t head, uint64_t cut);

    // Reads written bytes at `offset`; returns how many.
    size_t read_at(uint64_t offset, char* into, size_t count) const;

    const std::string& error() const { return error_; }

  private:
    bool fail(const std::string& what, int error_number);

    std::string path_;
    int fd_ = -1;
    uint64_t inode_ = 0;
    uint64_t device_ = 0;
    uint64_t written_ = 0;  // Bytes in the file.
    std::unique_ptr<char[]> buffer_;
    size_t capacity_ = 0;
    size_t pending_ = 0;  // Bytes in the buffer.
    std::string error_;
};

}  // namespace standin::sim
