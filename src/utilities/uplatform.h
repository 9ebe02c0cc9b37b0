#pragma once

#include <cstdint>

namespace VX_UTL {

// The few names in which the platforms differ for paths and the library
// search. Each platform file defines them.
namespace uPlatform {

// Separator of path pieces: '/' on POSIX, '\\' on Windows.
extern const char path_separator;
// Variable that the platform's library search reads at load time, and the
// separator of its entries: LD_LIBRARY_PATH and ':' on POSIX, PATH and ';'
// on Windows.
extern const char* const library_search_variable;
extern const char* const library_search_separator;
// What the platform puts around a library's base name in its file name:
// "lib" and ".so" on POSIX, "" and ".dll" on Windows.
extern const char* const library_prefix;
extern const char* const library_suffix;

// Id of the calling thread, never 0: the kernel thread id on POSIX,
// GetCurrentThreadId on Windows.
uint32_t current_thread_id();

}  // namespace uPlatform
}  // namespace VX_UTL
