#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "utilities/udll.h"
#include "utilities/ustring.h"

namespace VX_UTL {

// LoadLibraryA searches a bare name itself, reading PATH at each load, so a
// directory added at run time counts without any search of ours.
void* uDll::open_module(const std::string& name, std::string& error) {
    HMODULE module = LoadLibraryA(name.c_str());
    if (module == nullptr) {
        const DWORD code = GetLastError();
        error = "failed to load " + name + " with error code " + std::to_string(code);
    }
    return reinterpret_cast<void*>(module);
}

uDll::symbol uDll::find_module_symbol(void* module, const char* name, std::string& error) {
    const FARPROC address = GetProcAddress(static_cast<HMODULE>(module), name);
    if (address == nullptr) {
        const auto code = static_cast<int32_t>(GetLastError());
        uString::format_int(code, error, false, "GetLastError() returned %d");
        return nullptr;
    }
    return reinterpret_cast<symbol>(address);
}

void uDll::close_module(void* module) {
    FreeLibrary(static_cast<HMODULE>(module));
}

// Windows file names carry no version.
const char* uDll::versioned_library_file_name(std::string& output, const char* base, const char*) {
    return library_file_name(output, base);
}

}  // namespace VX_UTL
