#include <windows.h>

#include <cstdlib>
#include <cstring>
#include <sstream>

#include "host.h"

const char* const library_search_variable = "PATH";

std::string library_search_path() {
    std::string value(32767, '\0');  // The most a variable holds.
    value.resize(GetEnvironmentVariableA(library_search_variable, value.data(), 32767));
    char system[MAX_PATH];
    const UINT system_length = GetWindowsDirectoryA(system, MAX_PATH);
    std::istringstream entries(value);
    std::string kept, entry;
    const char* separator = "";
    while (std::getline(entries, entry, ';')) {
        if (_strnicmp(entry.c_str(), system, system_length) != 0) {
            kept += separator + entry;
            separator = ";";
        }
    }
    return kept;
}

void* library_function(const char* path, const char* name) {
    HMODULE library = LoadLibraryA(path);
    FARPROC address = library != nullptr ? GetProcAddress(library, name) : nullptr;
    if (address == nullptr) {
        std::abort();
    }
    return reinterpret_cast<void*>(address);
}
