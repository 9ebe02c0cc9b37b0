#include "utilities/udll.h"

#include <cstring>
#include <utility>

#include "utilities/uenv.h"
#include "utilities/uplatform.h"
#include "utilities/utrace_registry.h"
#include "utilities/utracelog.h"

namespace VX_UTL {

uDll::uDll(const char* name, int32_t flags_word) : flags(flags_word == -1 ? 0 : flags_word) {
    if (name != nullptr) {
        file_name = name;
    }
}

uDll::~uDll() {
    if (module != nullptr) {
        set_last_error({});
        close_module(module);
        module = nullptr;
    }
}

bool uDll::load(const char* name, int32_t flags_word) {
    if (module != nullptr) {
        return true;
    }
    if (name != nullptr) {
        file_name = name;
    }
    if (flags_word != -1) {
        flags = flags_word;
    }
    if (file_name.empty()) {
        return false;
    }
    return load_file(file_name.c_str());
}

bool uDll::load_file(const char* name) {
    set_last_error({});
    std::string error;
    module = open_module(name, error);
    if (module == nullptr) {
        set_last_error(error);
        uTraceRegistry& registry = get_trace_registry();
        // A raised level with no log installed writes nowhere.
        if (registry.trace_level < 1 || registry.trace_log == nullptr) {
            return false;
        }
        registry.trace_log->write(1, 2, "uDll: %s", error.c_str());
    }
    return module != nullptr;
}

uDll::symbol uDll::get_symbol(const char* name) {
    if (module == nullptr || name == nullptr) {
        return nullptr;
    }
    std::string error;
    const symbol address = find_module_symbol(module, name, error);
    set_last_error(std::move(error));
    return address;
}

uDll::symbol uDll::get_decorated_symbol(const char* name) {
    if (name == nullptr) {
        return nullptr;
    }
    if (const symbol address = get_symbol(name)) {
        return address;
    }
    return get_symbol(("_" + std::string(name)).c_str());
}

void uDll::add_search_directory(const std::string& directory) {
    // Copied at once: the text of uEnv::get lasts only until the next get.
    std::string search = uEnv::get(uPlatform::library_search_variable);
    search += uPlatform::library_search_separator;
    search += directory;
    uEnv::set(uPlatform::library_search_variable, search.c_str());
}

std::string uDll::last_error() const {
    const std::lock_guard<std::mutex> hold(error_lock);
    return error_text;
}

void uDll::set_last_error(std::string text) {
    const std::lock_guard<std::mutex> hold(error_lock);
    error_text = std::move(text);
}

bool uDll::has_library_suffix(const char* name) {
    if (name == nullptr) {
        return false;
    }
    // A search, not a test of the end: versioned names hold the suffix inside.
    return std::strcmp(name, uPlatform::library_suffix) != 0 &&
           std::strstr(name, uPlatform::library_suffix) != nullptr;
}

const char* uDll::library_file_name(std::string& output, const char* base) {
    if (base == nullptr) {
        return output.c_str();
    }
    if (has_library_suffix(base)) {
        output += base;
    } else {
        output += uPlatform::library_prefix;
        output += base;
        output += uPlatform::library_suffix;
    }
    return output.c_str();
}

}  // namespace VX_UTL
