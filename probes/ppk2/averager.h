#pragma once

// Device samples (100 000 a second) to rows at a rate of 1 to 100 000 a
// second. Period p holds the device samples with index from
// floor(p * 100000 / rate) up to the next period's start, so that periods
// keep step with the clock at every rate: at 3 a second they hold 33333,
// 33333 and 33334 samples. A period is made from the samples that arrived;
// one whose samples were all lost is left out, a gap in the indices.
//
// With a trigger input, the first period starts at the first sample in
// which that input is high after a sample in which it was low; samples and
// losses before it are not part of the capture.
//
// Owned and used by one thread.

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "ppk2/stream_decoder.h"

namespace probes::ppk2 {

struct period {
    uint64_t index;         // Periods since the start; a gap skips indices.
    double mean, min, max;  // Amperes, of the samples that arrived.
    uint32_t samples;       // Arrived.
    // Device samples lost since the end of the previous period made, up to
    // this one's end: with the gaps before it, so that the sum is all lost.
    uint64_t lost;
    uint8_t logic;    // Each input as it was for most of the samples; a tie reads high.
    bool clipped;     // Any sample clipped.
    uint32_t shares;  // Entries it added to the logic shares, in order of appearance.
};

// The samples of a period that arrived with one logic byte.
struct logic_share {
    uint8_t logic;
    uint32_t samples;
    double sum;  // Amperes.
};

class averager {
  public:
    // `rate` from 1 to device_rate; `trigger_input` 0 to 7 for D0 to D7.
    explicit averager(int32_t rate, std::optional<int> trigger_input = std::nullopt);

    // Appends the periods that `samples` complete to `out`, and how each
    // splits by logic byte to `shares`.
    void add(std::span<const device_sample> samples, std::vector<period>& out,
             std::vector<logic_share>& shares);

    bool waiting_for_trigger() const { return waiting_; }

  private:
    uint64_t start_of(uint64_t p) const;
    uint64_t period_of(uint64_t sample_index) const;
    // Where add() puts what it makes.
    struct sink {
        std::vector<period>& periods;
        std::vector<logic_share>& shares;
    };

    void take(const device_sample& s, uint64_t index, const sink& out);
    void end_run();
    void close(const sink& out);

    const uint64_t rate_;
    const uint8_t trigger_mask_;
    bool waiting_;
    bool trigger_low_seen_ = false;

    uint64_t next_index_ = 0;  // Device index the next arrival has if none is lost.
    uint64_t made_end_ = 0;    // End index of the last period made.
    uint64_t period_ = 0;
    uint64_t period_end_;
    // The open period.
    double sum_ = 0, min_ = 0, max_ = 0;
    uint32_t count_ = 0;
    bool clipped_ = false;
    std::array<uint32_t, 8> high_{};        // Samples each input was high, runs ended.
    std::vector<logic_share> open_shares_;  // Runs ended, by logic byte.
    uint8_t run_logic_ = 0;
    uint32_t run_length_ = 0;
    double run_sum_ = 0;
};

}  // namespace probes::ppk2
