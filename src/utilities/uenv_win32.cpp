#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <vector>

#include "utilities/uenv.h"
#include "utilities/uerror.h"
#include "utilities/uplatform.h"

namespace VX_UTL {

namespace {
constexpr const char* null_name_text = "failed set an environment variable name to null";
constexpr const char* null_value_text = "failed set an environment variable value to null";
// The platform's limit for one value, terminator included.
constexpr DWORD value_buffer_size = 32768;
}  // namespace

const char* uEnv::get(const char* name) {
    if (name == nullptr) {
        throw source_utilities_error(null_name_text);
    }
    std::vector<char> buffer(value_buffer_size);
    const DWORD count = GetEnvironmentVariableA(name, buffer.data(), value_buffer_size);
    std::string& entry = thread_env_values[uPlatform::current_thread_id()];
    // A count at or above the size means the value didn't fit and the buffer
    // holds nothing; the limit makes that impossible, but empty is safe.
    entry.assign(count != 0 && count < value_buffer_size ? buffer.data() : "");
    return entry.c_str();
}

void uEnv::set(const char* name, const char* value) {
    if (name == nullptr) {
        throw source_utilities_error(null_name_text);
    }
    if (value == nullptr) {
        throw source_utilities_error(null_value_text);
    }
    SetEnvironmentVariableA(name, value);
}

}  // namespace VX_UTL
