#ifndef ZELNO_TESTS_LIBRARY_STRING_H
#define ZELNO_TESTS_LIBRARY_STRING_H

/* A string object as the loaded library's compiler lays it out, read and
   destroyed by its bytes alone, with no C++ string type involved:
   library_string_posix.c (libstdc++), library_string_win32.c (Microsoft's
   x64 library). A wrong layout on zelno's side shows as a fault text. */

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Copies the text of the 32-byte object at `object` into `text` (`room`
   bytes, NUL-terminated). Null, or what is wrong with the object. */
const char* read_library_string(const unsigned char* object, char* text, size_t room);

/* Copies `size` bytes of text at `data`, which a terminator must follow,
   into `text`: the part both layouts share. Null, or what is wrong. */
const char* copy_library_text(const char* data, uint64_t size, char* text, size_t room);

/* What the callee of a string passed by value does at its end: the caller
   built the object, the callee destroys it. Null, or what went wrong. */
const char* destroy_string_argument(unsigned char* object);

#ifdef __cplusplus
}
#endif

#endif
