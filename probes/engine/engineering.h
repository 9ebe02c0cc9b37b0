#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace standin::sim {

// "2.467 mA": four significant digits with an SI prefix from p to k.
std::string si_text(double value, std::string_view unit);

// "50 mA": whole nanoamperes in the largest unit that keeps them whole.
std::string current_text(int64_t na);

// The power of a current at a voltage: nA * uV is fW, rounded half away
// from zero to whole nW.
inline int64_t power_nw(int64_t current_na, int64_t voltage_uv) {
    const int64_t fw = current_na * voltage_uv;
    return (fw >= 0 ? fw + 500'000 : fw - 500'000) / 1'000'000;
}

}  // namespace standin::sim
