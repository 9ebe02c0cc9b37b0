#pragma once

// The probe's measuring side: turns the target's true mean current into a
// reading with noise, the range's resolution and clipping, and measures the
// supply voltage under that load.

#include <cmath>
#include <cstdint>

#include "common/board.h"
#include "engine/engineering.h"
#include "sim/probe.h"

namespace standin::sim {

struct reading {
    int64_t current_na;
    int64_t voltage_uv;
    int64_t power_nw;
    bool clipped;
};

// A fast generator with a fixed seed: two captures of one board with the same
// options give the same file, which makes them comparable.
class noise_source {
  public:
    explicit noise_source(uint64_t seed) : state_(seed | 1) {}

    uint64_t next() {
        state_ ^= state_ >> 12;
        state_ ^= state_ << 25;
        state_ ^= state_ >> 27;
        return state_ * 0x2545F4914F6CDD1DULL;
    }

    // Close to a standard normal value: the sum of four uniform 16-bit parts.
    double normal() {
        const uint64_t r = next();
        const double sum = static_cast<double>((r & 0xFFFF) + ((r >> 16) & 0xFFFF) +
                                               ((r >> 32) & 0xFFFF) + (r >> 48));
        return (sum - 131070.0) * (1.0 / 37837.2);
    }

  private:
    uint64_t state_;
};

class front_end {
  public:
    front_end(const board_model& board, const probe_range& range, uint64_t seed = 0x5eed)
        : noise_(seed),
          noise_ppm_(static_cast<double>(board.noise_ppm) * 1e-6),
          noise_floor_na_(static_cast<double>(board.noise_floor_na)),
          supply_uv_(board.supply_uv),
          source_mohm_(board.source_resistance_mohm),
          full_scale_na_(range.full_scale_na),
          resolution_na_(range.resolution_na),
          noisy_(board.noise_ppm != 0 || board.noise_floor_na != 0) {}

    reading measure(int64_t true_na) {
        int64_t na = true_na;
        if (noisy_) {
            const double sigma = static_cast<double>(true_na) * noise_ppm_ + noise_floor_na_;
            // Rounds half away from zero without a branch on the sign, which
            // noise makes unpredictable.
            const double offset = sigma * noise_.normal();
            na += static_cast<int64_t>(offset + std::copysign(0.5, offset));
        }
        if (resolution_na_ != 1) {
            const int64_t half = resolution_na_ / 2;
            na = (na >= 0 ? na + half : na - half) / resolution_na_ * resolution_na_;
        }
        bool clipped = false;
        if (na > full_scale_na_ || na < -full_scale_na_) {
            na = na > 0 ? full_scale_na_ : -full_scale_na_;
            clipped = true;
        }
        // nA * mOhm is pV; the drop follows the true current, not the reading.
        // A supply can't go below 0 V however much the load asks of it, and
        // with that bound the products below stay under 10^17.
        const int64_t drop_uv = (true_na * source_mohm_ + 500'000) / 1'000'000;
        const int64_t voltage_uv = drop_uv < supply_uv_ ? supply_uv_ - drop_uv : 0;
        return {na, voltage_uv, power_nw(na, voltage_uv), clipped};
    }

    noise_source& noise() { return noise_; }

  private:
    noise_source noise_;
    double noise_ppm_;
    double noise_floor_na_;
    int64_t supply_uv_;
    int64_t source_mohm_;
    int64_t full_scale_na_;
    int64_t resolution_na_;
    bool noisy_;
};

}  // namespace standin::sim
