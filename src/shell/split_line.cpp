#include "shell/split_line.h"

std::vector<std::string> split_line(const char* text, char separator) {
    std::vector<std::string> fields;
    const char* cursor = text;
    for (;;) {
        const char* start = cursor;
        const char* end = cursor;
        if (*cursor == '"') {
            start = cursor + 1;
            end = start;
            while (*end != '\0' && *end != '"') {
                ++end;
            }
        } else {
            while (*end != '\0' && *end != separator) {
                ++end;
            }
        }
        if (end > start) {
            fields.emplace_back(start, end);
        }
        // `end` stands on a closing quote, a separator or the terminator.
        if (*end == '\0') {
            return fields;
        }
        cursor = end + 1;
    }
}
