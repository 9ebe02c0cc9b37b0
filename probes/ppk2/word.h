#pragma once

// One sample word of the PPK2's stream, and its current. Pure and inline:
// the decoder runs this 100 000 times a second.

#include <array>
#include <cstdint>
#include <cstring>

namespace probes::ppk2 {

inline constexpr int range_count = 5;
inline constexpr uint16_t adc_full_scale = 0x3fff;  // 14 bits
inline constexpr uint8_t counter_modulus = 64;

struct word_fields {
    uint16_t adc;
    uint8_t range;  // 0 (smallest currents) to 4; larger codes read as 4.
    uint8_t counter;
    uint8_t logic;  // D0 in bit 0 to D7 in bit 7.
};

constexpr word_fields split_word(uint32_t w) {
    const auto range = static_cast<uint8_t>((w >> 14) & 0x7);
    return {static_cast<uint16_t>(w & adc_full_scale), range < range_count ? range : uint8_t{4},
            static_cast<uint8_t>((w >> 18) & 0x3f), static_cast<uint8_t>(w >> 24)};
}

inline uint32_t load_word(const uint8_t* p) {
    return uint32_t{p[0]} | uint32_t{p[1]} << 8 | uint32_t{p[2]} << 16 | uint32_t{p[3]} << 24;
}

// The device's calibration, one value per range, as its metadata gives it.
struct calibration {
    std::array<double, range_count> r{1031.64, 101.65, 10.15, 0.94, 0.043};  // ohms
    std::array<double, range_count> gs{1, 1, 1, 1, 1};
    std::array<double, range_count> gi{1, 1, 1, 1, 1};
    std::array<double, range_count> o{};
    std::array<double, range_count> s{};
    std::array<double, range_count> i{};
    std::array<double, range_count> ug{1, 1, 1, 1, 1};
};

// ADC codes to amperes for one calibration and regulator voltage, with the
// per-range constants folded once.
class converter {
  public:
    converter(const calibration& cal, double regulator_volts) {
        for (int r = 0; r < range_count; ++r) {
            per_range_[r] = {volts_per_count / cal.r[r],
                             cal.o[r],
                             cal.gs[r],
                             cal.gi[r],
                             cal.s[r] * regulator_volts + cal.i[r],
                             cal.ug[r]};
        }
    }

    double amperes(uint8_t range, uint16_t adc) const {
        const auto& k = per_range_[range];
        const double x = (4.0 * adc - k.offset) * k.scale;
        return k.ug * (x * (k.gs * x + k.gi) + k.constant);
    }

  private:
    static constexpr double volts_per_count = 1.8 / 163840;
    struct folded {
        double scale, offset, gs, gi, constant, ug;
    };
    std::array<folded, range_count> per_range_{};
};

}  // namespace probes::ppk2
