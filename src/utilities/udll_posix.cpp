#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

#include "utilities/udll.h"
#include "utilities/uplatform.h"

namespace VX_UTL {

namespace {

constexpr int open_flags = RTLD_NOW | RTLD_LOCAL;

std::string loader_error() {
    const char* text = dlerror();
    return text != nullptr ? text : "unknown loader error";
}

}  // namespace

// The loader reads LD_LIBRARY_PATH once, at process start; Windows reads PATH
// at each load. A directory added at run time must count, so a bare name is
// first tried in each directory of the variable as it stands now, then
// handed to the loader's own search (RUNPATH, cache, system directories).
void* uDll::open_module(const std::string& name, std::string& error) {
    // Of a file that exists but won't load, the loader's reason says more
    // than the final "not found".
    std::string first_refusal;
    if (name.find('/') == std::string::npos) {
        const char* variable = std::getenv(uPlatform::library_search_variable);
        std::string_view directories = variable != nullptr ? variable : "";
        while (!directories.empty()) {
            const std::size_t end = directories.find(uPlatform::library_search_separator);
            const std::string_view directory = directories.substr(0, end);
            directories.remove_prefix(end == std::string_view::npos ? directories.size() : end + 1);
            if (directory.empty()) {
                continue;
            }
            const std::string path = std::string(directory) + '/' + name;
            if (access(path.c_str(), F_OK) != 0) {
                continue;
            }
            if (void* module = dlopen(path.c_str(), open_flags)) {
                return module;
            }
            if (first_refusal.empty()) {
                first_refusal = loader_error();
            }
        }
    }
    if (void* module = dlopen(name.c_str(), open_flags)) {
        return module;
    }
    const std::string reason = loader_error();
    error = "failed to load " + name + ": " + (first_refusal.empty() ? reason : first_refusal);
    return nullptr;
}

uDll::symbol uDll::find_module_symbol(void* module, const char* name, std::string& error) {
    dlerror();
    void* address = dlsym(module, name);
    if (address == nullptr) {
        error = loader_error();
        return nullptr;
    }
    return reinterpret_cast<symbol>(address);
}

void uDll::close_module(void* module) {
    dlclose(module);
}

const char* uDll::versioned_library_file_name(std::string& output, const char* base,
                                              const char* version) {
    const bool named = has_library_suffix(base);
    library_file_name(output, base);
    if (base != nullptr && !named && version != nullptr && *version != '\0') {
        output += '.';
        output += version;
    }
    return output.c_str();
}

}  // namespace VX_UTL
