#pragma once

// What a host would make of the words the emulator sent: each word decoded
// and smoothed after a range change as the PPK2's reference clients do, and
// summed. The emulator's own account, against which a host's figures are
// checked.

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "emulator_calibration.h"

namespace ppk2_emulator {

// Reference clients' smoothing after a range change: the switch leaves a
// spike, so the sample of the change and the two after it read a running
// average instead (range 4 its slower one); in range 4's first two samples
// the averages don't take the spike in.
class range_smoothing {
  public:
    double next(int range, double amperes);

  private:
    static constexpr double alpha = 0.18;
    static constexpr double alpha_range4 = 0.06;
    static constexpr int replaced = 3;

    std::optional<double> average_, average4_;
    std::optional<int> previous_range_;
    int after_change_ = 0;
    int in_range_ = 0;  // Samples since the last change.
};

// One stream's figures; the owner is the device, on the serving thread.
struct stream_figures {
    uint64_t words_sent = 0;  // Whole words; a slipped word counts in `slipped`.
    uint64_t lost = 0;        // Samples the counter jumps over.
    uint64_t slipped = 0;     // Words sent one byte short.
    uint64_t decoded = 0;     // Samples in the sums below.
    double sum_a = 0;
    double peak_a = 0;
    double volts = 0;  // The voltage a host multiplies by for energy.
    // The same samples by their logic byte, summed in the same order, so that
    // a host attributing samples to codes can match each sum exactly.
    std::array<uint64_t, 256> code_samples{};
    std::array<double, 256> code_sum_a{};

    void add(double amperes, uint8_t code) {
        sum_a += amperes;
        if (decoded == 0 || amperes > peak_a) {
            peak_a = amperes;
        }
        ++decoded;
        ++code_samples[code];
        code_sum_a[code] += amperes;
    }
};

// `key value` lines, one figure a line, in SI units.
std::string render_report(const stream_figures& figures, uint64_t streams);

}  // namespace ppk2_emulator
