#include "utilities/ustring.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace VX_UTL {

const char* uString::replace(std::string& text, const char* from, const char* to) {
    if (from == nullptr) {
        throw error("unable to perform string replacement from null original text");
    }
    if (to == nullptr) {
        throw error("unable to perform string replacement with null replacement text");
    }
    const std::size_t from_length = std::strlen(from);
    if (from_length == 0) {
        return text.c_str();
    }
    const std::size_t to_length = std::strlen(to);
    // When `to` holds `from` anywhere at or behind byte L, resuming at
    // position + L finds our own output again for ever, so resume behind the
    // insert. Otherwise every later hit ends beyond the insert and takes up
    // at least one byte of the original text, so the search ends.
    const bool resume_behind_insert =
        std::string_view(to, to_length).find(std::string_view(from, from_length), from_length) !=
        std::string_view::npos;

    std::size_t position = 0;
    while (position + from_length <= text.size()) {
        const std::size_t hit = text.find(from, position, from_length);
        if (hit == std::string::npos) {
            break;
        }
        text.replace(hit, from_length, to, to_length);
        position = hit + (resume_behind_insert ? to_length : from_length);
    }
    return text.c_str();
}

const char* uString::format_int(int32_t value, std::string& text, bool append, const char* format) {
    char buffer[1024];
    // The format is the caller's by contract: one integer conversion.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    const int written = std::snprintf(buffer, sizeof buffer, format != nullptr ? format : "%d",
                                      static_cast<int>(value));
#pragma GCC diagnostic pop
    const std::size_t length =
        written < 0 ? 0 : std::min(static_cast<std::size_t>(written), sizeof buffer - 1);
    if (append) {
        text.append(buffer, length);
    } else {
        text.assign(buffer, length);
    }
    return text.c_str();
}

}  // namespace VX_UTL
