#include <sys/syscall.h>
#include <unistd.h>

#include "utilities/uplatform.h"

namespace VX_UTL::uPlatform {

const char path_separator = '/';
const char* const library_search_variable = "LD_LIBRARY_PATH";
const char* const library_search_separator = ":";
const char* const library_prefix = "lib";
const char* const library_suffix = ".so";

uint32_t current_thread_id() {
    return static_cast<uint32_t>(syscall(SYS_gettid));
}

}  // namespace VX_UTL::uPlatform
