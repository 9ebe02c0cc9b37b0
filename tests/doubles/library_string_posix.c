/* libstdc++'s std::string: a pointer to the text, the length, then 16
   bytes that hold the text while it fits (the pointer points there) or
   else the capacity. */

#include <stdint.h>
#include <string.h>

#include "library_string.h"

const char* read_library_string(const unsigned char* object, char* text, size_t room) {
    const char* data;
    uint64_t size;
    uint64_t capacity = 15;
    memcpy(&data, object, sizeof data);
    memcpy(&size, object + 8, sizeof size);
    text[0] = '\0';
    if (data != (const char*)(object + 16)) {
        memcpy(&capacity, object + 16, sizeof capacity);
    }
    if (size > capacity) {
        return "length above the capacity";
    }
    return copy_library_text(data, size, text, room);
}

/* The Itanium C++ ABI has the caller destroy it. */
const char* destroy_string_argument(unsigned char* object) {
    (void)object;
    return NULL;
}
