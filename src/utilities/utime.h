#pragma once

#include <cstdint>

namespace VX_UTL {

// The local time as text, to the millisecond. Constructing an object takes a
// snapshot of the clock; format renders the latest snapshot of the process,
// whichever object took it, through strftime with two more placeholders:
// "%s" (milliseconds, three digits) and "%#s" (milliseconds, bare number).
//
// The snapshot and the state are class-wide and unguarded: a constructor on
// one thread beside a format on another mixes two moments. Users build and
// format under a lock of their own, as the trace log does.
class uTime {
  public:
    struct snapshot_t {
        int32_t year;         // Full year.
        int32_t month;        // 1 to 12.
        int32_t day;          // Day of the month, from 1.
        int32_t hour;         // 0 to 23.
        int32_t minute;       // 0 to 59.
        int32_t second;       // 0 to 59.
        int32_t millisecond;  // 0 to 999.
        int32_t day_of_year;  // Days since 1 January, from 0.
        int32_t day_of_week;  // 0 for Sunday to 6.
    };

    uTime();
    virtual ~uTime() = default;

    // Writes the snapshot into `buffer` (`size` bytes, terminator included)
    // and returns it; null, with the buffer untouched, for a null buffer or
    // format, a size of 0 or less, or state 2. In state 1 the text is
    // "Invalid time", cut to fit. An empty text when a placeholder's digits
    // or the rendering don't fit.
    char* format(char* buffer, int32_t size, const char* format_text) const;

    // Index of the first `needle` at or after `start`; -1 if there is none or
    // `start` lies outside the text.
    static int32_t find_text(const char* text, const char* needle, int32_t start);

    // Replaces every `needle` in `text`, in place, if the result fits into
    // `size` bytes; otherwise nothing changes. Returns the number replaced.
    static int32_t replace_text(char* text, int32_t size, const char* needle,
                                const char* replacement);

    // Days since 1 January of the year, counting every fourth year as a leap
    // year; 0 for a month outside 1 to 12.
    static int32_t day_of_year(int32_t year, int32_t month, int32_t day);

    // Records `moment` as the snapshot, as the constructor records the
    // clock's: day_of_year is worked out, the state becomes 0. Tests use it
    // to format a fixed moment.
    static void set_snapshot(const snapshot_t& moment);

    // Tests only: states 1 (no snapshot yet) and 2 (null results) can't be
    // reached otherwise once an object has been built.
    static void set_time_state(int32_t state);

  private:
    // The platform's local time; day_of_year is left to set_snapshot.
    static snapshot_t local_time();

    static snapshot_t snapshot;
    // 0: snapshot valid; 1: none taken yet; 2: format gives null.
    static int32_t time_state;
};

}  // namespace VX_UTL
