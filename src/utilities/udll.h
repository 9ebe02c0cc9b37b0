#pragma once

#include <cstdint>
#include <mutex>
#include <string>

namespace VX_UTL {

// One library loaded at run time. Never throws: a failed load or look-up is
// told by the result, and each caller words its own error. The object owns
// the loaded module and frees it in its destructor, the only way to unload.
//
// load runs on the main thread; get_symbol also runs on use-case threads and
// the console control thread, once the module is loaded.
class uDll {
  public:
    using symbol = void (*)();

    uDll(const char* name, int32_t flags);
    ~uDll();
    uDll(const uDll&) = delete;
    uDll& operator=(const uDll&) = delete;

    // A loaded object ignores the name and flags and gives true. A flags
    // value of -1 leaves the stored flags alone.
    bool load(const char* name, int32_t flags);
    bool load_file(const char* name);
    bool is_loaded() const { return module != nullptr; }
    symbol get_symbol(const char* name);
    // The name as given, else with a leading underscore, as some builds of a
    // library decorate their exports. Null for a null name.
    symbol get_decorated_symbol(const char* name);

    // Puts `directory` behind the entries of the platform's library search
    // variable, as it stands now; later loads by bare name see it.
    static void add_search_directory(const std::string& directory);

    // Text of the last failure on this object, empty after a success.
    std::string last_error() const;

    // "lib" + base + ".so" on POSIX, base + ".dll" on Windows, unless the
    // base already holds the suffix. Appends to `output`.
    static const char* library_file_name(std::string& output, const char* base);
    // The name under which the loader finds the given ABI version of a
    // library: "lib" + base + ".so." + version on POSIX, where the runtime
    // package ships only that name; as library_file_name on Windows, whose
    // file names carry no version.
    static const char* versioned_library_file_name(std::string& output, const char* base,
                                                   const char* version);
    static bool has_library_suffix(const char* name);

  private:
    // The platform's part. Each gives null on failure and then sets `error`
    // to the full text for last_error.
    static void* open_module(const std::string& name, std::string& error);
    static symbol find_module_symbol(void* module, const char* name, std::string& error);
    static void close_module(void* module);

    void set_last_error(std::string text);

    std::string file_name;  // Main thread only.
    int32_t flags;          // Stored only; no platform call takes it.
    // Set by load on the main thread before any thread looks symbols up.
    void* module = nullptr;
    // Every look-up writes the text, on whichever thread it runs.
    mutable std::mutex error_lock;
    std::string error_text;  // Guarded by error_lock.
};

}  // namespace VX_UTL
