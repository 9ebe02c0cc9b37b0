#pragma once

#include <cstdint>
#include <string>

namespace VX_UTL {

// One library loaded at run time. Never throws: a failed load or look-up is
// told by the result, and each caller words its own error. The object owns
// the loaded module and frees it in its destructor, the only way to unload.
class uDll {
public:
    using symbol = void (*)();

    uDll(const char* name, int32_t flags);
    ~uDll();
    uDll(const uDll&) = delete;
    uDll& operator=(const uDll&) = delete;

    bool load(const char* name, int32_t flags);
    bool load_file(const char* name);
    bool is_loaded() const { return module != nullptr; }
    symbol get_symbol(const char* name);

    // Text of the last failure of this thread's calls on this object.
    std::string last_error() const;

    // "lib" + base + ".so" on POSIX, base + ".dll" on Windows, unless the
    // base already holds the suffix.
    static const char* library_file_name(std::string& output, const char* base);
    static bool has_library_suffix(const char* name);

private:
    std::string file_name;
    int32_t flags;
    void* module = nullptr;
};

}  // namespace VX_UTL
