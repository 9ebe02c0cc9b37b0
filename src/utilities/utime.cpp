#include "utilities/utime.h"

#include <cstdio>
#include <cstring>
#include <ctime>
#include <vector>

namespace VX_UTL {

namespace {

constexpr const char* invalid_time_text = "Invalid time";

// Days before each month, indexed by month - 1; the last entry is the length
// of the year.
constexpr int32_t days_before_month[13] = {0,   31,  59,  90,  120, 151, 181,
                                           212, 243, 273, 304, 334, 365};
constexpr int32_t days_before_month_leap[13] = {0,   31,  60,  91,  121, 152, 182,
                                                213, 244, 274, 305, 335, 366};

// Replaces every `placeholder` in `buffer` by `millisecond` rendered with
// `digits_format`. False when the placeholder is there and the digits don't
// fit.
bool replace_placeholder(char* buffer, int32_t size, std::vector<char>& work,
                         const char* placeholder, const char* digits_format, int32_t millisecond) {
    if (uTime::find_text(buffer, placeholder, 0) < 0) {
        return true;
    }
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    std::snprintf(work.data(), work.size(), digits_format, static_cast<int>(millisecond));
#pragma GCC diagnostic pop
    return uTime::replace_text(buffer, size, placeholder, work.data()) > 0;
}

}  // namespace

uTime::snapshot_t uTime::snapshot{};
int32_t uTime::time_state = 1;

uTime::uTime() {
    set_snapshot(local_time());
}

void uTime::set_snapshot(const snapshot_t& moment) {
    snapshot = moment;
    snapshot.day_of_year = day_of_year(moment.year, moment.month, moment.day);
    time_state = 0;
}

void uTime::set_time_state(int32_t state) {
    time_state = state;
}

int32_t uTime::day_of_year(int32_t year, int32_t month, int32_t day) {
    if (month < 1 || month > 12) {
        return 0;
    }
    // Every fourth year, with no rule for centuries.
    const int32_t* table = year % 4 == 0 ? days_before_month_leap : days_before_month;
    return table[month - 1] + day - 1;
}

char* uTime::format(char* buffer, int32_t size, const char* format_text) const {
    if (buffer == nullptr || format_text == nullptr || time_state == 2 || size <= 0) {
        return nullptr;
    }
    const auto limit = static_cast<std::size_t>(size);
    if (time_state == 1) {
        std::strncpy(buffer, invalid_time_text, limit);
        buffer[limit - 1] = '\0';
        return buffer;
    }

    std::vector<char> work(size <= 10 ? std::size_t{10} : limit + 1);
    std::strncpy(buffer, format_text, limit);
    buffer[limit - 1] = '\0';

    // A placeholder left in place would reach strftime, which doesn't know
    // it; give up with an empty text instead.
    if (!replace_placeholder(buffer, size, work, "%s", "%03d", snapshot.millisecond) ||
        !replace_placeholder(buffer, size, work, "%#s", "%d", snapshot.millisecond)) {
        buffer[0] = '\0';
        return buffer;
    }

    std::tm moment{};
    moment.tm_sec = snapshot.second;
    moment.tm_min = snapshot.minute;
    moment.tm_hour = snapshot.hour;
    moment.tm_mday = snapshot.day;
    moment.tm_mon = snapshot.month - 1;
    moment.tm_year = snapshot.year - 1900;
    moment.tm_wday = snapshot.day_of_week;
    moment.tm_yday = snapshot.day_of_year;
    moment.tm_isdst = 0;

    std::memcpy(work.data(), buffer, std::strlen(buffer) + 1);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    const std::size_t written = std::strftime(buffer, limit, work.data(), &moment);
#pragma GCC diagnostic pop
    // A rendering that doesn't fit leaves the buffer's content undefined.
    if (written == 0) {
        buffer[0] = '\0';
    }
    return buffer;
}

int32_t uTime::find_text(const char* text, const char* needle, int32_t start) {
    if (text == nullptr || needle == nullptr || start < 0 ||
        static_cast<std::size_t>(start) > std::strlen(text)) {
        return -1;
    }
    const char* hit = std::strstr(text + start, needle);
    return hit == nullptr ? -1 : static_cast<int32_t>(hit - text);
}

int32_t uTime::replace_text(char* text, int32_t size, const char* needle, const char* replacement) {
    if (text == nullptr || needle == nullptr || replacement == nullptr || *needle == '\0' ||
        size <= 0) {
        return 0;
    }
    int32_t count = 0;
    for (int32_t hit = find_text(text, needle, 0); hit >= 0;
         hit = find_text(text, needle, hit + 1)) {
        ++count;
    }
    if (count == 0) {
        return 0;
    }

    const auto needle_length = static_cast<int64_t>(std::strlen(needle));
    const auto replacement_length = static_cast<int64_t>(std::strlen(replacement));
    const int64_t growth = replacement_length - needle_length;
    int64_t length = static_cast<int64_t>(std::strlen(text));
    // All or nothing. Overlapping needles are counted each, so the test errs
    // on the safe side for them.
    if (length + growth * count + 1 > size) {
        return 0;
    }

    int32_t replaced = 0;
    int32_t hit = find_text(text, needle, 0);
    while (hit >= 0 && replaced < count) {
        if (growth != 0) {
            // The rest, terminator included, moves to stand behind the
            // replacement.
            char* rest = text + hit + needle_length;
            const auto rest_length = static_cast<std::size_t>(length - hit - needle_length + 1);
            std::memmove(rest + growth, rest, rest_length);
            length += growth;
        }
        std::memcpy(text + hit, replacement, static_cast<std::size_t>(replacement_length));
        ++replaced;
        // Resume behind the replacement, so that digits or an empty
        // replacement are never searched again and nothing is skipped.
        hit = find_text(text, needle, hit + static_cast<int32_t>(replacement_length));
    }
    return replaced;
}

}  // namespace VX_UTL
