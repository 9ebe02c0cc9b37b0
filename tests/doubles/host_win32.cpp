#include <windows.h>

#include <cstdlib>
#include <regex>

#include "host.h"

const char* const library_search_variable = "PATH";

std::string library_search_path() {
    std::string value(32767, '\0');  // The most a variable holds.
    value.resize(GetEnvironmentVariableA(library_search_variable, value.data(), 32767));
    // The system's own entries lie in the Windows folder.
    return std::regex_replace(value,
                              std::regex(R"([a-z]:\\windows(\\[^;]*)?;?)", std::regex::icase), "");
}

void* library_function(const char* path, const char* name) {
    HMODULE library = LoadLibraryA(path);
    FARPROC address = library != nullptr ? GetProcAddress(library, name) : nullptr;
    if (address == nullptr) {
        std::abort();
    }
    return reinterpret_cast<void*>(address);
}
