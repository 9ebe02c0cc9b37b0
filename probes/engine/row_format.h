#pragma once

// The text of a capture: its header and its rows, in "csv" or "gnuplot" form,
// with or without the minimum and maximum of averaged periods and the
// program-counter columns of trace mode "ws+".

#include <cstdint>
#include <string>
#include <string_view>

#include "engine/fixed_format.h"
#include "engine/sample_source.h"

namespace standin::sim {

struct row_layout {
    char separator = ',';  // ',' for csv, ' ' for gnuplot.
    bool trace_plus = false;
    bool min_max = false;  // Averaged periods: their least and most current follow `clipped`.
    bool program_counters = true;  // "ws+" rows of marks have "-" for a pc.
    int32_t rate = 1;
    int time_decimals = 3;       // Enough to tell samples apart.
    uint64_t time_scale = 1000;  // 10^time_decimals.
    uint64_t time_step = 1;      // time_scale / rate when whole, else 0.
};

row_layout make_row_layout(bool gnuplot, bool trace_plus, bool min_max, int32_t rate);

size_t column_count(const row_layout& layout);

// The column names; with "gnuplot", after the source's own lines.
std::string capture_header(const row_layout& layout, std::string_view description);

// Room a row needs besides its function name.
inline constexpr size_t max_row_size = 256;

// The time of a sample: whole seconds and samples into the second.
struct sample_time {
    uint64_t second = 0;
    uint64_t tick = 0;
};

inline char* put_row(char* out, const row_layout& layout, uint64_t index, sample_time time,
                     const period_sample& r, int64_t energy_nj) {
    const char sep = layout.separator;
    out = put_uint(out, index);
    *out++ = sep;
    const uint64_t fraction =
        layout.time_step != 0 ? time.tick * layout.time_step
                              : time.tick * layout.time_scale / static_cast<uint64_t>(layout.rate);
    out = put_fixed(out, time.second, fraction, layout.time_decimals);
    *out++ = sep;
    out = put_fixed<9>(out, r.current_na);
    *out++ = sep;
    out = put_fixed<6>(out, r.voltage_uv);
    *out++ = sep;
    out = put_fixed<9>(out, r.power_nw);
    *out++ = sep;
    out = put_fixed<9>(out, energy_nj);
    *out++ = sep;
    *out++ = r.clipped ? '1' : '0';
    if (layout.min_max) {
        *out++ = sep;
        out = put_fixed<9>(out, r.min_na);
        *out++ = sep;
        out = put_fixed<9>(out, r.max_na);
    }
    return out;
}

// The columns that "ws+" adds; `out` points behind put_row's text.
inline char* put_trace(char* out, const row_layout& layout, uint64_t pc,
                       std::string_view function) {
    *out++ = layout.separator;
    if (layout.program_counters) {
        out = put_address(out, pc);
    } else {
        *out++ = '-';
    }
    *out++ = layout.separator;
    std::memcpy(out, function.data(), function.size());
    return out + function.size();
}

}  // namespace standin::sim
