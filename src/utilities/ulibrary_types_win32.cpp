#include <windows.h>

#include <cstring>
#include <new>
#include <stdexcept>

#include "utilities/ulibrary_types.h"

namespace VX_UTL {

namespace {

// Microsoft's allocator hands a block of 4096 bytes or more out with a
// header of its own in front, which a plain heap block lacks: a library
// freeing such a string would misread it. Words are at most a line of 1023
// bytes, so this never limits zelno.
constexpr uint64_t largest_heap_capacity = 4079;

// The capacity that Microsoft's std::string gives text of `size` bytes made
// from a pointer and a length: inline up to 15; else the size with its low
// four bits set, at least one and a half times the inline capacity.
uint64_t capacity_for(uint64_t size) {
    if (size <= uLibraryString::inline_capacity) {
        return uLibraryString::inline_capacity;
    }
    const uint64_t rounded = size | 15;
    const uint64_t grown = uLibraryString::inline_capacity + uLibraryString::inline_capacity / 2;
    return rounded > grown ? rounded : grown;
}

void free_text(uLibraryString& string) {
    if (string.capacity > uLibraryString::inline_capacity) {
        HeapFree(GetProcessHeap(), 0, string.heap_text);
    }
}

// A control block as Microsoft's library lays it out.
struct library_control_block {
    using slot = void (*)(library_control_block* self);  // x64: `this` comes first, as here.
    const slot* vtable;
    volatile LONG uses;
    volatile LONG weaks;
};

}  // namespace

uLibraryString& uLibraryString::operator=(std::string_view text) {
    const uint64_t new_capacity = capacity_for(text.size());
    if (new_capacity > largest_heap_capacity) {
        throw std::length_error("text too long for a library's string");
    }
    if (new_capacity == inline_capacity) {
        char copy[16] = {};  // `text` may lie in this object's own buffer.
        text.copy(copy, text.size());
        free_text(*this);
        std::memcpy(inline_text, copy, sizeof copy);
    } else {
        auto* block = static_cast<char*>(HeapAlloc(GetProcessHeap(), 0, new_capacity + 1));
        if (block == nullptr) {
            throw std::bad_alloc();
        }
        text.copy(block, text.size());
        block[text.size()] = '\0';
        free_text(*this);
        heap_text = block;
    }
    size = text.size();
    capacity = new_capacity;
    return *this;
}

uLibraryString::~uLibraryString() {
    free_text(*this);
}

// One reference dropped, as Microsoft's _Decref does: at no uses the object
// goes (_Destroy), then the control block's own reference (_Delete_this).
uLibrarySharedPtr::~uLibrarySharedPtr() {
    auto* block = static_cast<library_control_block*>(control_block);
    if (block == nullptr) {
        return;
    }
    if (InterlockedDecrement(&block->uses) == 0) {
        block->vtable[0](block);
        if (InterlockedDecrement(&block->weaks) == 0) {
            block->vtable[1](block);
        }
    }
}

}  // namespace VX_UTL
