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

// fopen(name, "r"), but a directory is refused: Windows fails to open one,
// POSIX opens it. For callers that only test whether a file is there to read.
std::FILE* open_file_for_reading(const char* name);

// The platform's debug channel: syslog at debug priority on POSIX,
// OutputDebugStringA on Windows. Whether anyone listens is not known.
namespace uDebugChannel {
void output(const char* text);
}  // namespace uDebugChannel

}  // namespace VX_UTL
