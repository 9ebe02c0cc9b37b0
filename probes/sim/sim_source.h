#pragma once

// The probe simulator as a sample source: the target model's current
// through the front end, period by period as the clock makes them due,
// after the board's trigger delay, with program counters for "ws+".
// Threads: as sample_source says; nothing here is shared.

#include <cstdint>
#include <string>
#include <vector>

#include "engine/sample_source.h"
#include "sim/front_end.h"
#include "sim/probe.h"
#include "sim/target_model.h"

namespace standin::sim {

class sim_source final : public sample_source {
  public:
    explicit sim_source(source_request request);

    std::string_view name() const override { return "the probe simulator"; }
    std::string describe(std::string_view trace_mode) const override;
    bool averages() const override { return false; }
    bool measures_voltage() const override { return true; }
    size_hint largest_periods() const override;

    void start(clock::time_point now) override;
    ready_periods poll(clock::time_point now) override;
    void take(period_sample* into, size_t count) override;
    clock::time_point next_ready_at() const override;
    const std::string& failure() const override { return failure_; }
    clip_advice clipping() const override;
    void finish() override {}

  private:
    void place_pc(uint32_t mode, period_sample& s);

    const source_request request_;
    const probe_range range_;
    target_model model_;
    front_end front_;
    uint32_t sleep_mode_ = 0;  // The firmware marks its lowest-current mode as sleep.
    std::vector<std::vector<uint32_t>> mode_shares_;   // Running sums of shares, per mode.
    std::vector<std::vector<uint32_t>> mode_regions_;  // Matching function indices.
    clock::time_point start_{};                        // Of period 0: the trigger.
    uint64_t handed_ = 0;                              // Periods lost or taken.
    int64_t clipped_peak_na_ = 0;  // The largest true current of a clipped period.
    const std::string failure_;    // A simulator does not fail.
};

}  // namespace standin::sim
