#include "ppk2/averager.h"

#include <algorithm>

#include "ppk2/protocol.h"

namespace probes::ppk2 {

averager::averager(int32_t rate, std::optional<int> trigger_input)
    : rate_(static_cast<uint64_t>(std::clamp(rate, 1, device_rate))),
      trigger_mask_(trigger_input ? static_cast<uint8_t>(1u << (*trigger_input & 7)) : 0),
      waiting_(trigger_input.has_value()),
      period_end_(start_of(1)) {}

uint64_t averager::start_of(uint64_t p) const {
    return p * device_rate / rate_;
}

// The largest p whose start is at or before the index.
uint64_t averager::period_of(uint64_t sample_index) const {
    return ((sample_index + 1) * rate_ - 1) / device_rate;
}

void averager::add(std::span<const device_sample> samples, std::vector<period>& out,
                   std::vector<logic_share>& shares) {
    const sink to{out, shares};
    for (const device_sample& s : samples) {
        if (waiting_) {
            const bool high = (s.logic & trigger_mask_) != 0;
            if (!high || !trigger_low_seen_) {
                trigger_low_seen_ = !high;
                continue;
            }
            waiting_ = false;
            take(s, 0, to);
            continue;
        }
        take(s, next_index_ + s.lost_before, to);
    }
}

void averager::take(const device_sample& s, uint64_t index, const sink& out) {
    if (index >= period_end_) {
        if (count_ > 0) {
            close(out);
        }
        period_ = period_of(index);
        period_end_ = start_of(period_ + 1);
    }
    sum_ += s.current;
    min_ = count_ == 0 ? s.current : std::min(min_, s.current);
    max_ = count_ == 0 ? s.current : std::max(max_, s.current);
    ++count_;
    clipped_ = clipped_ || s.clipped;
    // Inputs change seldom: count by runs, not by sample.
    if (s.logic != run_logic_) {
        end_run();
        run_logic_ = s.logic;
    }
    ++run_length_;
    run_sum_ += s.current;
    next_index_ = index + 1;
    if (next_index_ == period_end_) {
        close(out);
        ++period_;
        period_end_ = start_of(period_ + 1);
    }
}

void averager::end_run() {
    if (run_length_ == 0) {
        return;
    }
    for (int b = 0; b < 8; ++b) {
        high_[b] += (run_logic_ >> b) & 1u ? run_length_ : 0;
    }
    auto share = std::find_if(open_shares_.begin(), open_shares_.end(),
                              [&](const logic_share& o) { return o.logic == run_logic_; });
    if (share == open_shares_.end()) {
        open_shares_.push_back({run_logic_, 0, 0});
        share = open_shares_.end() - 1;
    }
    share->samples += run_length_;
    share->sum += run_sum_;
    run_length_ = 0;
    run_sum_ = 0;
}

void averager::close(const sink& out) {
    end_run();
    uint8_t logic = 0;
    for (int b = 0; b < 8; ++b) {
        logic |= static_cast<uint8_t>((2 * high_[b] >= count_ ? 1u : 0u) << b);
    }
    out.periods.push_back({period_, sum_ / count_, min_, max_, count_,
                           period_end_ - made_end_ - count_, logic, clipped_,
                           static_cast<uint32_t>(open_shares_.size())});
    out.shares.insert(out.shares.end(), open_shares_.begin(), open_shares_.end());
    open_shares_.clear();
    made_end_ = period_end_;
    sum_ = 0;
    count_ = 0;
    clipped_ = false;
    high_ = {};
}

}  // namespace probes::ppk2
