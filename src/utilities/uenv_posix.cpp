#include <cstdlib>

#include "utilities/uenv.h"
#include "utilities/uerror.h"
#include "utilities/uplatform.h"

namespace VX_UTL {

namespace {
constexpr const char* null_name_text = "failed set an environment variable name to null";
constexpr const char* null_value_text = "failed set an environment variable value to null";
}  // namespace

const char* uEnv::get(const char* name) {
    if (name == nullptr) {
        throw source_utilities_error(null_name_text);
    }
    const char* value = std::getenv(name);
    std::string& entry = thread_env_values[uPlatform::current_thread_id()];
    entry.assign(value != nullptr ? value : "");
    return entry.c_str();
}

void uEnv::set(const char* name, const char* value) {
    if (name == nullptr) {
        throw source_utilities_error(null_name_text);
    }
    if (value == nullptr) {
        throw source_utilities_error(null_value_text);
    }
    setenv(name, value, 1);
}

}  // namespace VX_UTL
