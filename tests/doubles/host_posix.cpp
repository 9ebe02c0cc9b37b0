#include <dlfcn.h>

#include <cstdlib>
#include <memory>

#include "host.h"

const char* const library_search_variable = "LD_LIBRARY_PATH";

std::string library_search_path() {
    const char* value = std::getenv(library_search_variable);
    return value != nullptr ? value : "";
}

void* library_function(const char* path, const char* name) {
    void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    void* address = library != nullptr ? dlsym(library, name) : nullptr;
    if (address == nullptr) {
        std::abort();
    }
    return address;
}

void leave_shared_reference(unsigned char* slot, void (*released)()) {
    *reinterpret_cast<std::shared_ptr<void>*>(slot) =
        std::shared_ptr<void>(slot, [released](void*) { released(); });
}
