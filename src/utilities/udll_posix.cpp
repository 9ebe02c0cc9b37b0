#include <dlfcn.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "utilities/udll.h"
#include "utilities/ufile.h"
#include "utilities/uplatform.h"

namespace VX_UTL {

namespace {

constexpr int open_flags = RTLD_NOW | RTLD_LOCAL;

std::string loader_error() {
    const char* text = dlerror();
    return text != nullptr ? text : "unknown loader error";
}

// The entries of LD_LIBRARY_PATH as it stands now, empty ones left out.
std::vector<std::string> current_search_directories() {
    std::vector<std::string> directories;
    const char* variable = std::getenv(uPlatform::library_search_variable);
    std::string_view rest = variable != nullptr ? variable : "";
    while (!rest.empty()) {
        const std::size_t end = rest.find(uPlatform::library_search_separator);
        if (end != 0) {
            directories.emplace_back(rest.substr(0, end));
        }
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    }
    return directories;
}

// The directories the loader searches for the executable itself, RUNPATH
// included with $ORIGIN expanded.
std::vector<std::string> executable_search_directories() {
    std::vector<std::string> directories;
    void* executable = dlopen(nullptr, RTLD_LAZY);
    if (executable == nullptr) {
        return directories;
    }
    Dl_serinfo size;
    if (dlinfo(executable, RTLD_DI_SERINFOSIZE, &size) == 0) {
        std::vector<std::max_align_t> storage(size.dls_size / sizeof(std::max_align_t) + 1);
        auto* info = reinterpret_cast<Dl_serinfo*>(storage.data());
        info->dls_size = size.dls_size;
        info->dls_cnt = size.dls_cnt;
        if (dlinfo(executable, RTLD_DI_SERINFO, info) == 0) {
            const Dl_serpath* paths = info->dls_serpath;
            for (unsigned int i = 0; i < info->dls_cnt; ++i) {
                directories.emplace_back(paths[i].dls_name);
            }
        }
    }
    dlclose(executable);
    return directories;
}

// Of a file that exists but won't load, the loader's reason says more than
// the final "not found", so the first such reason is kept.
void* open_in(const std::vector<std::string>& directories, const std::string& name,
              std::string& first_refusal) {
    for (const std::string& directory : directories) {
        const std::string path = directory + '/' + name;
        if (access(path.c_str(), F_OK) != 0 || !opens_without_waiting(path.c_str())) {
            continue;
        }
        if (void* module = dlopen(path.c_str(), open_flags)) {
            return module;
        }
        if (first_refusal.empty()) {
            first_refusal = loader_error();
        }
    }
    return nullptr;
}

}  // namespace

// The loader reads LD_LIBRARY_PATH once, at process start; Windows reads PATH
// at each load. A directory added at run time must count, so a bare name is
// first tried in each directory of the variable as it stands now, then
// handed to the loader's own search (RUNPATH, cache, system directories).
//
// A sanitizer's dlopen interceptor makes its runtime the caller, and the
// loader then searches that runtime's RUNPATH instead of the executable's.
// So when the bare name finds nothing, the executable's own search list is
// tried by path; in a plain build the loader has been there already.
void* uDll::open_module(const std::string& name, std::string& error) {
    const bool bare = name.find('/') == std::string::npos;
    std::string first_refusal;
    if (bare) {
        if (void* module = open_in(current_search_directories(), name, first_refusal)) {
            return module;
        }
    }
    // The loader's open of a FIFO would wait for a writer.
    const bool would_wait = !bare && !opens_without_waiting(name.c_str());
    if (void* module = would_wait ? nullptr : dlopen(name.c_str(), open_flags)) {
        return module;
    }
    const std::string reason = would_wait ? name + ": not a regular file" : loader_error();
    if (bare) {
        if (void* module = open_in(executable_search_directories(), name, first_refusal)) {
            return module;
        }
    }
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
