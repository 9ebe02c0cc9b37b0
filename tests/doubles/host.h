#pragma once

#include <string>

// What the doubles need of the platform: host_posix.cpp, host_win32.cpp.

// The library search variable, and its value as it stands; on Windows
// without the system's folders, which differ between machines.
extern const char* const library_search_variable;
std::string library_search_path();
// The function `name` of the library at `path`; aborts when there is none.
void* library_function(const char* path, const char* name);
// Puts a reference into the empty shared pointer at `slot`, as the library's
// compiler lays one out; `released` runs when the last one is dropped, in
// the order that compiler's own release takes.
void leave_shared_reference(unsigned char* slot, void (*released)());
