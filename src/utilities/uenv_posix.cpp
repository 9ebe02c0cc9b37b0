#include <cstdlib>

#include "utilities/uenv.h"

namespace VX_UTL {

void uEnv::read_variable(const char* name, std::string& value) {
    const char* found = std::getenv(name);
    value.assign(found != nullptr ? found : "");
}

void uEnv::write_variable(const char* name, const char* value) {
    setenv(name, value, 1);
}

}  // namespace VX_UTL
