#pragma once

// What the simulated probe is: its name, its measuring ranges and its limits.
// docs/simulator.md documents every number here.

#include <cstdint>
#include <string>
#include <string_view>

namespace standin::sim {

// The device names a session may give: zelno's default and our own.
inline constexpr std::string_view default_device_name = "unused";
inline constexpr std::string_view probe_name = "sim";

inline constexpr int32_t max_sample_rate = 10'000'000;

// Samples that are due more than this long are lost, as a probe's buffer
// overflows when its host falls behind; the summary counts them as dropped.
inline constexpr int64_t backlog_limit_ms = 1000;

struct probe_range {
    std::string_view name;
    int64_t full_scale_na;  // A reading beyond +/- this is clipped to it.
    int64_t resolution_na;  // Readings are whole multiples of this.
    int64_t window_s;       // Without saveall the file keeps this much, the latest.
};

// "lo" keeps ~33 minutes and "hi" ~1 minute of data without saveall.
inline constexpr probe_range low_range{"lo", 50'000'000, 1, 2000};
inline constexpr probe_range high_range{"hi", 1'000'000'000, 100, 60};

const probe_range* find_range(std::string_view name);

// The next larger range whose full scale holds `peak_na`, or null.
const probe_range* range_holding(const probe_range& used, int64_t peak_na);

}  // namespace standin::sim
