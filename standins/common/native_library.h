#pragma once

// Loading a stand-in library at run time, and the process's CPU time: what
// simdrive needs of the platform. Implemented in native_library_posix.cpp
// and native_library_win32.cpp.

#include <cstdint>
#include <string>

namespace standin {

// lib<base>.so or <base>.dll, found as zelno finds it (RUNPATH, or the
// executable's folder); null with the loader's reason in `error`.
void* open_library(const std::string& base, std::string& error);
// Null when the library exports no such name.
void* library_symbol(void* library, const char* name);

int64_t process_cpu_ns();

}  // namespace standin
