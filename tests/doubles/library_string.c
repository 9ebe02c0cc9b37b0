/* What both layouts share once the text is found. */

#include "library_string.h"

#include <string.h>

const char* copy_library_text(const char* data, uint64_t size, char* text, size_t room) {
    if (data[size] != '\0') {
        return "no terminator behind the text";
    }
    if (size >= room) {
        return "text longer than the double reads";
    }
    memcpy(text, data, size);
    text[size] = '\0';
    return NULL;
}
