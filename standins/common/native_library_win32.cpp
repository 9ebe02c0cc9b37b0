#include <windows.h>

#include "common/native_library.h"

namespace standin {

void* open_library(const std::string& base, std::string& error) {
    const std::string name = base + ".dll";
    HMODULE library = ::LoadLibraryA(name.c_str());
    if (library == nullptr) {
        error =
            "cannot load " + name + ": GetLastError() returned " + std::to_string(::GetLastError());
    }
    return reinterpret_cast<void*>(library);
}

void* library_symbol(void* library, const char* name) {
    return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(library), name));
}

int64_t process_cpu_ns() {
    FILETIME created{};
    FILETIME ended{};
    FILETIME kernel{};
    FILETIME user{};
    ::GetProcessTimes(::GetCurrentProcess(), &created, &ended, &kernel, &user);
    auto ns = [](const FILETIME& t) {  // In units of 100 ns.
        return static_cast<int64_t>((uint64_t{t.dwHighDateTime} << 32) | t.dwLowDateTime) * 100;
    };
    return ns(kernel) + ns(user);
}

}  // namespace standin
