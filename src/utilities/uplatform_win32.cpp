#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "utilities/uplatform.h"

namespace VX_UTL::uPlatform {

const char path_separator = '\\';
const char* const library_search_variable = "PATH";
const char* const library_search_separator = ";";
const char* const library_prefix = "";
const char* const library_suffix = ".dll";

uint32_t current_thread_id() {
    return GetCurrentThreadId();
}

}  // namespace VX_UTL::uPlatform
