/* Microsoft's x64 std::string: bytes 0-15 hold the text and its terminator
   while the capacity is 15, else a pointer to the text in a block of the
   process heap; the length at 16, the capacity at 24. The capacity of a
   string made from a pointer and a length is 15 up to 15 bytes, else the
   length with its low four bits set, at least 22. */

#include <stdint.h>
#include <string.h>
#include <windows.h>

#include "library_string.h"

static uint64_t capacity_for(uint64_t size) {
    const uint64_t rounded = size | 15;
    return size <= 15 ? 15 : rounded > 22 ? rounded : 22;
}

/* The text's block, checked as a callee that frees or grows it needs it. */
static const char* heap_text(const unsigned char* object, uint64_t capacity, char** data) {
    memcpy(data, object, sizeof *data);
    if (!HeapValidate(GetProcessHeap(), 0, *data)) {
        return "text in no block of the process heap";
    }
    if (HeapSize(GetProcessHeap(), 0, *data) < capacity + 1) {
        return "heap block smaller than the capacity and a terminator";
    }
    return NULL;
}

const char* read_library_string(const unsigned char* object, char* text, size_t room) {
    uint64_t size;
    uint64_t capacity;
    char* data = (char*)object;
    const char* fault = NULL;
    memcpy(&size, object + 16, sizeof size);
    memcpy(&capacity, object + 24, sizeof capacity);
    text[0] = '\0';
    if (capacity != capacity_for(size)) {
        return "capacity is not what Microsoft's std::string gives the length";
    }
    if (capacity > 15 && (fault = heap_text(object, capacity, &data)) != NULL) {
        return fault;
    }
    return copy_library_text(data, size, text, room);
}

const char* destroy_string_argument(unsigned char* object) {
    uint64_t capacity;
    char* data = NULL;
    const char* fault = NULL;
    memcpy(&capacity, object + 24, sizeof capacity);
    if (capacity <= 15) {
        return NULL;
    }
    if ((fault = heap_text(object, capacity, &data)) != NULL) {
        return fault;
    }
    return HeapFree(GetProcessHeap(), 0, data) ? NULL : "HeapFree refused the text";
}
