#ifndef ZELNO_TESTS_RECORD_FIELDS_H
#define ZELNO_TESTS_RECORD_FIELDS_H

/* The use-case records read as a library reads them: each field at its
   offset, the strings through read_library_string (record_fields.c). */

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

enum { record_text_room = 1024, record_line_room = 8192, shared_slot_offset = 216 };

/* `line` gets the fields as "name=value" words, a string that is wrong as
   "name=BAD <fault>"; `name` gets the output (wattscope) or the input
   (prodtest) file name, which picks the double's behaviour. */
void describe_wattscope_record(const unsigned char* record, char* name, char* line);
void describe_prodtest_record(const unsigned char* record, char* name, char* line);

#ifdef __cplusplus
}
#endif

#endif
