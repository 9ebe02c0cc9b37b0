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
    std::string& entry = thread_env_values[uPlatform::current_thread_id()];
    read_variable(name, entry);
    return entry.c_str();
}

void uEnv::set(const char* name, const char* value) {
    if (name == nullptr) {
        throw source_utilities_error(null_name_text);
    }
    if (value == nullptr) {
        throw source_utilities_error(null_value_text);
    }
    write_variable(name, value);
}

}  // namespace VX_UTL
