#define WIN32_LEAN_AND_MEAN
#include <share.h>
#include <windows.h>

#include "utilities/ufile.h"

namespace VX_UTL {

std::FILE* uFile::open_shared(const char* name, const char* mode) {
    return _fsopen(name, mode, _SH_DENYNO);
}

// Windows refuses to open a folder already; the test keeps that certain
// whatever the C runtime does.
std::FILE* open_file_for_reading(const char* name) {
    const DWORD attributes = GetFileAttributesA(name);
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return nullptr;
    }
    return std::fopen(name, "r");
}

namespace uDebugChannel {

void output(const char* text) {
    if (text != nullptr) {
        OutputDebugStringA(text);
    }
}

}  // namespace uDebugChannel

}  // namespace VX_UTL
