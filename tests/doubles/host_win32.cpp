#include <windows.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
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

namespace {

// Microsoft's control block: vtable (_Destroy, _Delete_this), then the use
// and weak counts, 32-bit, at 8 and 12. A member function takes `this`
// first, as these take the block.
struct control_block {
    void (*const* vtable)(control_block*);
    int32_t uses;
    int32_t weaks;
    void (*released)();
    int destroyed;
};

void destroy_object(control_block* block) {
    block->destroyed++;
}

// Reports one release only when the object went first, once, and both
// counts reached 0.
void delete_this(control_block* block) {
    if (block->destroyed == 1 && block->uses == 0 && block->weaks == 0) {
        block->released();
    }
    delete block;
}

void (*const control_block_vtable[])(control_block*) = {destroy_object, delete_this};

}  // namespace

void leave_shared_reference(unsigned char* slot, void (*released)()) {
    auto* block = new control_block{control_block_vtable, 1, 1, released, 0};
    void* object = block;
    std::memcpy(slot, &object, sizeof object);
    std::memcpy(slot + 8, &block, sizeof block);
}
