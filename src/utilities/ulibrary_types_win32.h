#pragma once

// The objects as Microsoft's x64 compiler and standard library lay them out
// (see ulibrary_types.h). zelno.exe is built by MinGW with libstdc++, whose
// std::string and std::shared_ptr differ from them in layout and in how a
// by-value argument is destroyed; the vendor's DLLs read these bytes.

#include <cstddef>
#include <cstdint>
#include <new>
#include <string>
#include <string_view>

namespace VX_UTL {

// Microsoft's std::string: 16 bytes that hold the text and its terminator
// while the capacity is 15, else a pointer to the text in a block of the
// process heap (the heap that library's allocator takes from and frees
// into); then the length and the capacity. Text of 16 bytes or more gets a
// block of capacity + 1 bytes, the capacity rounded as that library rounds
// a string made from a pointer and a length.
//
// The object owns its block and gives it back when destroyed; the owner
// touches it from one thread at a time.
struct uLibraryString {
    union {
        char inline_text[16];
        char* heap_text;
    };
    uint64_t size;
    uint64_t capacity;

    static constexpr uint64_t inline_capacity = 15;

    uLibraryString() noexcept : inline_text{}, size(0), capacity(inline_capacity) {}
    uLibraryString(const char* text) : uLibraryString() { *this = std::string_view(text); }
    uLibraryString(const std::string& text) : uLibraryString() { *this = std::string_view(text); }
    uLibraryString(std::string_view text) : uLibraryString() { *this = text; }
    ~uLibraryString();
    uLibraryString(const uLibraryString&) = delete;
    uLibraryString& operator=(const uLibraryString&) = delete;

    uLibraryString& operator=(std::string_view text);
    uLibraryString& operator=(const char* text) { return *this = std::string_view(text); }
    uLibraryString& operator=(const std::string& text) { return *this = std::string_view(text); }
};
static_assert(sizeof(uLibraryString) == 32);
static_assert(offsetof(uLibraryString, size) == 16);
static_assert(offsetof(uLibraryString, capacity) == 24);

inline std::string_view text_of(const uLibraryString& text) noexcept {
    return {text.capacity > uLibraryString::inline_capacity ? text.heap_text : text.inline_text,
            text.size};
}

// Microsoft's std::shared_ptr: the object, then the control block, whose
// vtable starts with _Destroy and _Delete_this and whose use and weak counts
// are 32-bit at offsets 8 and 12. zelno leaves it empty; a library may
// leave a reference in it, which the destructor drops as that library does.
struct uLibrarySharedPtr {
    void* object = nullptr;
    void* control_block = nullptr;

    uLibrarySharedPtr() noexcept = default;
    ~uLibrarySharedPtr();
    uLibrarySharedPtr(const uLibrarySharedPtr&) = delete;
    uLibrarySharedPtr& operator=(const uLibrarySharedPtr&) = delete;
};
static_assert(sizeof(uLibrarySharedPtr) == 16);

// Microsoft's x64 convention passes a string by value as a pointer to a
// temporary that the caller builds and the callee destroys.
using uLibraryStringArgument = uLibraryString*;

// The caller's temporary. After hand_over the string is the callee's, which
// destroys it on success and failure alike: this object never touches it
// again, not even in its destructor.
class uStringArgument {
  public:
    explicit uStringArgument(std::string_view text) {
        new (&string_) uLibraryString();
        string_ = text;  // On a throw the string is still empty: nothing to free.
    }
    ~uStringArgument() {
        if (!handed_over_) {
            string_.~uLibraryString();
        }
    }
    uStringArgument(const uStringArgument&) = delete;
    uStringArgument& operator=(const uStringArgument&) = delete;

    uLibraryStringArgument hand_over() noexcept {
        handed_over_ = true;
        return &string_;
    }

  private:
    union {
        uLibraryString string_;
    };
    bool handed_over_ = false;
};

// The callee's side: the parameter is destroyed with this object.
class uReceivedString {
  public:
    explicit uReceivedString(uLibraryStringArgument argument) noexcept : argument_(argument) {}
    ~uReceivedString() { argument_->~uLibraryString(); }
    uReceivedString(const uReceivedString&) = delete;
    uReceivedString& operator=(const uReceivedString&) = delete;

    std::string_view text() const noexcept { return text_of(*argument_); }

  private:
    uLibraryStringArgument argument_;
};

}  // namespace VX_UTL
