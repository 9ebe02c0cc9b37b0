#include "emulator_calibration.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace ppk2_emulator {

namespace {

// Volts per ADC step (the ADC value counts in quarters of this).
constexpr double adc_volts = 1.8 / 163840.0;

std::string shortest(double value) {
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, value).ptr;
    return std::string(text, end);
}

}  // namespace

calibration calibration::typical() {
    calibration cal;
    cal.r = {1003.3804, 101.5510, 10.2882, 0.9573, 0.0438};
    cal.gs = {0.0, 0.0, 0.0012, 0.0027, 0.0093};
    cal.gi = {1.0034, 0.9981, 1.0016, 0.9962, 1.0021};
    cal.o = {112.79, 75.26, 66.56, 58.42, 43.91};
    cal.s = {-7.1e-09, -5.4e-08, -6.1e-07, -3.5e-06, -2.9e-05};
    cal.i = {3.1e-09, 2.2e-08, 1.9e-07, 2.4e-06, 1.7e-05};
    cal.ug = {0.9931, 1.0024, 0.9987, 1.0051, 0.9968};
    return cal;
}

calibration calibration::defaults() {
    calibration cal;
    cal.calibrated = false;
    cal.r = {1031.64, 101.65, 10.15, 0.94, 0.043};
    cal.gs = {1, 1, 1, 1, 1};
    cal.gi = {1, 1, 1, 1, 1};
    cal.ug = {1, 1, 1, 1, 1};
    return cal;
}

double decode_current(const calibration& cal, int range, uint32_t adc, double volts) {
    const auto r = static_cast<size_t>(range);
    const double x = (4.0 * adc - cal.o[r]) * adc_volts / cal.r[r];
    return cal.ug[r] * (x * (cal.gs[r] * x + cal.gi[r]) + cal.s[r] * volts + cal.i[r]);
}

uint32_t encode_current(const calibration& cal, int range, double amperes, double volts) {
    const auto r = static_cast<size_t>(range);
    // Solve gs*x^2 + gi*x = c for the root nearest c/gi, in the form that
    // stays exact as gs goes to 0.
    const double c = amperes / cal.ug[r] - cal.s[r] * volts - cal.i[r];
    const double root = std::sqrt(std::max(0.0, cal.gi[r] * cal.gi[r] + 4 * cal.gs[r] * c));
    const double x = 2 * c / (cal.gi[r] + root);
    const double estimate = std::round((x * cal.r[r] / adc_volts + cal.o[r]) / 4);
    const auto clamp = [](double v) {
        return static_cast<uint32_t>(std::clamp(v, 0.0, static_cast<double>(adc_max)));
    };
    // The estimate is within a step; the neighbours settle the rounding
    // through the decoder itself.
    uint32_t best = clamp(estimate);
    double best_error = std::fabs(decode_current(cal, range, best, volts) - amperes);
    for (const double candidate : {estimate - 1, estimate + 1}) {
        const uint32_t adc = clamp(candidate);
        const double error = std::fabs(decode_current(cal, range, adc, volts) - amperes);
        if (error < best_error) {
            best = adc;
            best_error = error;
        }
    }
    return best;
}

int range_for(double amperes) {
    int range = 0;
    while (range < range_count - 1 && amperes >= range_limits[static_cast<size_t>(range)]) {
        ++range;
    }
    return range;
}

std::string metadata_text(const calibration& cal, uint32_t regulator_mv, int mode) {
    std::string text = "Calibrated: " + std::string(cal.calibrated ? "1" : "0") + "\n";
    const auto add = [&](const char* key, const std::array<double, range_count>& values,
                         bool unknown_reads_nan) {
        for (size_t r = 0; r < values.size(); ++r) {
            text += key + std::to_string(r) + ": ";
            if (!cal.calibrated) {
                text += unknown_reads_nan ? "-nan" : "0";
            } else {
                text += shortest(values[r]);
            }
            text += "\n";
        }
    };
    add("R", cal.r, false);
    add("GS", cal.gs, true);
    add("GI", cal.gi, true);
    add("O", cal.o, true);
    add("S", cal.s, true);
    add("I", cal.i, true);
    add("UG", cal.ug, true);
    text += "VDD: " + std::to_string(regulator_mv) + "\n";
    text += "HW: 9173\n";
    text += "mode: " + std::to_string(mode) + "\n";
    text += "IA: 56\n";
    text += "END\n";
    return text;
}

}  // namespace ppk2_emulator
