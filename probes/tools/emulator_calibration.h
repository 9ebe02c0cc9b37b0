#pragma once

// The emulated PPK2's calibration and its side of the ADC conversion: from a
// current to the ADC value and range that the device would send, and back to
// the current a host computes from them. Kept apart from the host's decoder
// on purpose, so that tests comparing the two catch a fault in either.

#include <array>
#include <cstdint>
#include <string>

namespace ppk2_emulator {

inline constexpr int range_count = 5;
inline constexpr uint32_t adc_max = 0x3FFF;  // 14 bits.

struct calibration {
    bool calibrated = true;
    std::array<double, range_count> r{}, gs{}, gi{}, o{}, s{}, i{}, ug{};

    // Values like a calibrated device's, fixed so that runs compare.
    static calibration typical();
    // What an uncalibrated device means: the hosts' documented defaults.
    static calibration defaults();
};

// The current (A) a host computes from an ADC value in range `range` with the
// regulator at `volts`.
double decode_current(const calibration& cal, int range, uint32_t adc, double volts);

// The ADC value in `range` whose decoded current is nearest to `amperes`,
// clamped to what 14 bits hold.
uint32_t encode_current(const calibration& cal, int range, double amperes, double volts);

// The range auto-ranging picks for a current: the lowest whose upper limit it
// stays below. The limits keep each range well inside its ADC scale.
int range_for(double amperes);
inline constexpr std::array<double, range_count - 1> range_limits{400e-6, 4e-3, 40e-3, 400e-3};

// The metadata reply: `KEY: value` lines and `END`. An uncalibrated device
// reads `Calibrated: 0`, `-nan` for the gains and 0 for the resistors, as some
// devices do; `mode` is 1 (ampere meter) or 2 (source meter).
std::string metadata_text(const calibration& cal, uint32_t regulator_mv, int mode);

}  // namespace ppk2_emulator
