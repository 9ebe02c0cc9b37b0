#include "sim/target_model.h"

#include <algorithm>

namespace standin::sim {

namespace {
__extension__ using wide = __int128;
}  // namespace

target_model::target_model(const board_model& board, int32_t rate) {
    for (const operating_mode& mode : board.modes) {
        cycle_ += mode.time_us * rate;
        current_.push_back(mode.current_na);
        mode_end_.push_back(cycle_);
    }
    if (cycle_ <= unit_per_sample) {
        for (const operating_mode& mode : board.modes) {
            cycle_charge_ += mode.current_na * mode.time_us * rate;
        }
    }
}

uint32_t target_model::mode_at(int64_t position) const {
    const auto it = std::upper_bound(mode_end_.begin(), mode_end_.end(), position % cycle_);
    return static_cast<uint32_t>(it - mode_end_.begin());
}

target_model::interval target_model::next_across_modes() {
    const uint32_t middle = mode_at(position_ + unit_per_sample / 2);
    int64_t left = unit_per_sample;
    int64_t charge = 0;  // nA * units; below 10^17 for a current below 100 A.
    if (left >= cycle_) {
        // Whole cycles inside one sample count at once.
        const int64_t cycles = left / cycle_;
        charge += cycles * cycle_charge_;
        left -= cycles * cycle_;
    }
    while (left > 0) {
        const int64_t take = std::min(left, mode_end_[mode_] - position_);
        charge += current_[mode_] * take;
        left -= take;
        position_ += take;
        if (position_ == mode_end_[mode_]) {
            if (++mode_ == mode_end_.size()) {
                mode_ = 0;
                position_ = 0;
            }
        }
    }
    const int64_t mean = (charge + unit_per_sample / 2) / unit_per_sample;
    return {mean, middle};
}

void target_model::skip(uint64_t count) {
    const wide advanced = static_cast<wide>(position_) + static_cast<wide>(count) * unit_per_sample;
    position_ = static_cast<int64_t>(advanced % cycle_);
    mode_ = mode_at(position_);
}

}  // namespace standin::sim
