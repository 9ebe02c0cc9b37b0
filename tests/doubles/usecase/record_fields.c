#include "usecase/record_fields.h"

#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "library_string.h"

struct field {
    const char* name;
    size_t offset;
    char kind; /* 's' string, 'i' 32-bit integer, 'b' byte, 'p' shared slot */
};

static const struct field wattscope_fields[] = {
    {"sampfreq", 0, 'i'},     {"output", 8, 's'},    {"format", 40, 's'},
    {"trace_mode", 72, 's'},  {"config", 104, 's'},  {"device", 136, 's'},
    {"maxoutsize", 168, 'i'}, {"range", 176, 's'},   {"duration", 208, 'i'},
    {"trig", 212, 'b'},       {"saveall", 213, 'b'}, {"shared_slot", shared_slot_offset, 'p'},
};
static const struct field prodtest_fields[] = {
    {"input", 0, 's'},
    {"config", 32, 's'},
    {"device", 64, 's'},
};

static void describe(const unsigned char* record, const struct field* fields, size_t count,
                     char* line) {
    size_t used = 0;
    size_t i;
    line[0] = '\0';
    for (i = 0; i < count && used < record_line_room; ++i) {
        const unsigned char* at = record + fields[i].offset;
        char* end = line + used;
        const size_t room = record_line_room - used;
        const char* space = i == 0 ? "" : " ";
        int32_t number;
        char text[record_text_room];
        const char* fault;
        static const unsigned char empty_slot[16];
        switch (fields[i].kind) {
            case 's':
                fault = read_library_string(at, text, sizeof text);
                snprintf(end, room, "%s%s=%s%s", space, fields[i].name, fault ? "BAD " : "",
                         fault ? fault : text);
                break;
            case 'i':
                memcpy(&number, at, sizeof number);
                snprintf(end, room, "%s%s=%d", space, fields[i].name, (int)number);
                break;
            case 'b':
                snprintf(end, room, "%s%s=%d", space, fields[i].name, (int)*at);
                break;
            default:
                snprintf(end, room, "%s%s=%s", space, fields[i].name,
                         memcmp(at, empty_slot, sizeof empty_slot) == 0 ? "empty" : "set");
                break;
        }
        used += strlen(end);
    }
}

static void name_of(const unsigned char* object, char* name) {
    if (read_library_string(object, name, record_text_room) != NULL) {
        name[0] = '\0';
    }
}

void describe_wattscope_record(const unsigned char* record, char* name, char* line) {
    name_of(record + 8, name);
    describe(record, wattscope_fields, sizeof wattscope_fields / sizeof *wattscope_fields, line);
}

void describe_prodtest_record(const unsigned char* record, char* name, char* line) {
    name_of(record, name);
    describe(record, prodtest_fields, sizeof prodtest_fields / sizeof *prodtest_fields, line);
}
