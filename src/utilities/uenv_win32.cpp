#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <vector>

#include "utilities/uenv.h"

namespace VX_UTL {

namespace {
// The platform's limit for one value, terminator included.
constexpr DWORD value_buffer_size = 32768;
}  // namespace

void uEnv::read_variable(const char* name, std::string& value) {
    std::vector<char> buffer(value_buffer_size);
    const DWORD count = GetEnvironmentVariableA(name, buffer.data(), value_buffer_size);
    // A count at or above the size means the value didn't fit and the buffer
    // holds nothing; the limit makes that impossible, but empty is safe.
    value.assign(count != 0 && count < value_buffer_size ? buffer.data() : "");
}

void uEnv::write_variable(const char* name, const char* value) {
    SetEnvironmentVariableA(name, value);
}

}  // namespace VX_UTL
