#pragma once

// Real-time arithmetic of sampling: which samples are due, and when.

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace standin::sim {

inline constexpr uint64_t nanoseconds_per_second = 1'000'000'000;

// How many sample periods have ended `elapsed` after the first began.
inline uint64_t periods_in(std::chrono::nanoseconds elapsed, int32_t rate) {
    const auto ns = static_cast<uint64_t>(std::max<int64_t>(elapsed.count(), 0));
    const auto r = static_cast<uint64_t>(rate);
    return ns / nanoseconds_per_second * r +
           ns % nanoseconds_per_second * r / nanoseconds_per_second;
}

// When `count` sample periods have ended, rounded up.
inline std::chrono::nanoseconds end_of_periods(uint64_t count, int32_t rate) {
    const auto r = static_cast<uint64_t>(rate);
    const uint64_t ns =
        count / r * nanoseconds_per_second + (count % r * nanoseconds_per_second + r - 1) / r;
    return std::chrono::nanoseconds(static_cast<int64_t>(ns));
}

}  // namespace standin::sim
