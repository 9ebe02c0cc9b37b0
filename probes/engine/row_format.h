#pragma once

// The text of a capture: its header and its rows, in "csv" or "gnuplot" form,
// with or without the program-counter columns of trace mode "ws+".

#include <cstdint>
#include <string>
#include <string_view>

#include "engine/fixed_format.h"
#include "sim/front_end.h"

namespace standin::sim {

struct row_layout {
    char separator = ',';  // ',' for csv, ' ' for gnuplot.
    bool trace_plus = false;
    int32_t rate = 1;
    int time_decimals = 3;       // Enough to tell samples apart.
    uint64_t time_scale = 1000;  // 10^time_decimals.
    uint64_t time_step = 1;      // time_scale / rate when whole, else 0.
};

row_layout make_row_layout(bool gnuplot, bool trace_plus, int32_t rate);

struct header_facts {
    std::string_view target;
    std::string_view config;
    std::string_view range;
    int64_t full_scale_na;
    int64_t resolution_na;
    std::string_view trace_mode;
};

std::string capture_header(const row_layout& layout, const header_facts& facts);

// Room a row needs besides its function name.
inline constexpr size_t max_row_size = 256;

// The time of a sample: whole seconds and samples into the second.
struct sample_time {
    uint64_t second = 0;
    uint64_t tick = 0;
};

inline char* put_row(char* out, const row_layout& layout, uint64_t index, sample_time time,
                     const reading& r, int64_t energy_nj) {
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
    return out;
}

// The columns that "ws+" adds; `out` points behind put_row's text.
inline char* put_trace(char* out, const row_layout& layout, uint64_t pc,
                       std::string_view function) {
    *out++ = layout.separator;
    out = put_address(out, pc);
    *out++ = layout.separator;
    std::memcpy(out, function.data(), function.size());
    return out + function.size();
}

}  // namespace standin::sim
