#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

#include "utilities/umutex.h"

namespace VX_UTL {

// One C stream, opened so that other programs may read and write the file
// meanwhile, with a lock around each write and flush. Closed when the object
// is destroyed. All operations may be called from any thread.
class uFile {
  public:
    uFile() = default;
    ~uFile();
    uFile(const uFile&) = delete;
    uFile& operator=(const uFile&) = delete;

    // Opens `name` (null opens nothing) with a C stream mode, closing any
    // stream opened before. `mode` is kept, not copied: pass a literal.
    bool open(const char* name, const char* mode);
    // Bytes written; 0 if not open.
    std::size_t write(const void* data, std::size_t count);
    // False if not open or the flush failed.
    bool flush();

  private:
    // The platform's open, sharing the file for reading and writing.
    static std::FILE* open_shared(const char* name, const char* mode);

    // All four guarded by file_lock.
    bool is_open = false;
    std::string file_name;
    const char* mode = nullptr;
    std::FILE* stream = nullptr;
    uMutex file_lock;
};

// fopen(name, "r") of a file that holds data to read: a directory is
// refused (Windows fails to open one, POSIX opens it), and so is a FIFO or
// socket, which would keep the open or the reads waiting for another
// program. The open itself never waits. For callers that only test whether
// a file is there to read.
std::FILE* open_file_for_reading(const char* name);

// False when `name` exists and is a FIFO or socket: opening one waits until
// another program opens its other end, and its writes wait for a reader.
// Looked at without opening it. A missing name, a regular file, a directory
// or a device gives true: the open itself then says what it finds.
bool opens_without_waiting(const char* name);

// Whether both names reach one file (one device and inode, or the
// platform's file index), however they are spelled; of a file that is not
// there yet, whether the names lead to one place.
bool is_same_file(const std::string& first, const std::string& second);

// The platform's debug channel: syslog at debug priority on POSIX,
// OutputDebugStringA on Windows. Whether anyone listens is not known.
namespace uDebugChannel {
void output(const char* text);
}  // namespace uDebugChannel

}  // namespace VX_UTL
