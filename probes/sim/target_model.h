#pragma once

// The target's current, sample by sample: each sample is the exact mean of
// the modelled current over its interval, so that sums over samples give the
// model's charge at any sample rate.

#include <cstdint>
#include <vector>

#include "common/board.h"

namespace standin::sim {

class target_model {
  public:
    target_model(const board_model& board, int32_t rate);

    struct interval {
        int64_t mean_na;  // Rounded to the nanoampere.
        uint32_t mode;    // The mode at the interval's midpoint.
    };

    // The next sample's interval; the first starts at the cycle's start.
    interval next() {
        const int64_t end = position_ + unit_per_sample;
        if (end < mode_end_[mode_]) {
            position_ = end;
            return {current_[mode_], mode_};
        }
        return next_across_modes();
    }

    // Passes over `count` samples that are lost.
    void skip(uint64_t count);

  private:
    // Time runs in units of 1 / (rate * 10^6) s: a sample is 10^6 units long
    // and a mode of t microseconds t * rate units, so both are whole numbers.
    static constexpr int64_t unit_per_sample = 1'000'000;

    interval next_across_modes();
    uint32_t mode_at(int64_t position) const;

    std::vector<int64_t> current_;   // Of each mode, nA.
    std::vector<int64_t> mode_end_;  // End of each mode within the cycle, in units.
    int64_t cycle_ = 0;              // Units.
    int64_t cycle_charge_ = 0;       // nA * units over one cycle, when a cycle fits a sample.
    int64_t position_ = 0;           // Start of the next sample within the cycle.
    uint32_t mode_ = 0;              // The mode that holds position_.
};

}  // namespace standin::sim
