#pragma once

// Where the capture engine's samples come from: the probe simulator or an
// instrument. The engine takes periods (one row each) in blocks and knows
// nothing of how they were measured.
//
// A source is made on zelno's main thread (in a use case's create); every
// call below then comes from the use case's thread, one at a time, in this
// order: start() once, poll() and take() until the use case ends, finish().
// finish() also comes from the destructor's thread when run never ran.

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "common/board.h"

namespace standin::sim {

using clock = std::chrono::steady_clock;

inline constexpr uint32_t no_function = UINT32_MAX;

// What the target's firmware marks on a probe input: its sleep mode or not.
enum class mode_mark : uint8_t { unknown, active, sleep };

// One period's measurement, the content of one row.
struct period_sample {
    int64_t current_na = 0;  // Mean over the period.
    int64_t voltage_uv = 0;
    int64_t power_nw = 0;
    // Least and most of the device samples averaged into the period; only
    // from a source that averages (averages()).
    int64_t min_na = 0;
    int64_t max_na = 0;
    uint64_t pc = 0;  // With trace mode "ws+": a program counter of the period.
    // What the period ran: an attribution (engine/function_marks.h), with
    // "ws+" or marks; for a split period, the one that held longest.
    uint32_t function = no_function;
    mode_mark mark = mode_mark::unknown;
    bool clipped = false;  // The current was cut to the full scale.
    // Entries of sample_source::shares() that split the period by what ran
    // in it; 0: the whole period ran `function`.
    uint32_t shares = 0;
};

// The part of a period that ran one attribution, from a source that tells
// the device samples of a period apart by the firmware's marks.
struct period_share {
    uint32_t function = no_function;
    mode_mark mark = mode_mark::unknown;
    uint32_t samples = 0;  // Device samples.
    double seconds = 0;
    double charge_nc = 0;
    double energy_nj = 0;
};

// Where clipping set in, and a range that would hold the largest clipped
// current so far (empty when none does).
struct clip_advice {
    int64_t full_scale_na = 0;
    std::string larger_range;
};

// What a use case asks of a source it makes.
struct source_request {
    board_model board;
    std::string config_name;  // The board file's name, for the header.
    int32_t rate = 0;         // Periods per second.
    std::string range;        // "lo" or "hi", as checked against the probe's traits.
    bool trace_plus = false;  // Program counters wanted.
    bool trigger = false;     // Period 0 starts at the board's trigger.
};

class sample_source {
  public:
    virtual ~sample_source() = default;

    // The probe as messages name it: "the probe simulator".
    virtual std::string_view name() const = 0;
    // The header's lines before the columns, each "# ...\n".
    virtual std::string describe(std::string_view trace_mode) const = 0;
    // True when rows carry the minimum and maximum of their period.
    virtual bool averages() const = 0;
    // False when the voltage is a setting or a nominal value, not measured.
    virtual bool measures_voltage() const = 0;
    // The largest periods the source may give (one per kind it knows, such
    // as the target's modes) and the characters noise may add to a row, for
    // estimating a capture's size before it runs.
    struct size_hint {
        std::vector<period_sample> periods;
        size_t slack = 0;
    };
    virtual size_hint largest_periods() const = 0;

    // Begins measuring: period 0 starts at `now`, or at the trigger.
    virtual void start(clock::time_point now) = 0;

    // What is there by `now`: `lost` periods of which nothing was measured
    // (handed over by this call), then `ready` periods for take(). With the
    // same `now` a second call gives nothing new.
    struct ready_periods {
        uint64_t lost = 0;
        uint64_t ready = 0;
    };
    virtual ready_periods poll(clock::time_point now) = 0;
    // The next `count` periods; at most what poll() said is ready. One call
    // per block: the per-period cost is the capture's.
    virtual void take(period_sample* into, size_t count) = 0;
    // The shares of the periods of the last take(), in their order; valid
    // until the next take().
    virtual std::span<const period_share> shares() const { return {}; }
    // False when rows name what ran from marks, with no program counter.
    virtual bool samples_program_counters() const { return true; }
    // When poll() may have more; the engine sleeps until then or a stop.
    virtual clock::time_point next_ready_at() const = 0;
    // Non-empty once the source failed (a device unplugged): nothing more
    // comes, and this says why.
    virtual const std::string& failure() const = 0;

    virtual clip_advice clipping() const = 0;

    // A source that averages device samples into periods counts the device
    // samples it lost, up to the last period taken; the summary's "dropped"
    // is then that count rather than the periods lost.
    virtual std::optional<uint64_t> lost_device_samples() const { return std::nullopt; }

    // Stops the device and switches the target off. Exactly once per
    // source, at whatever end; the engine makes sure of that.
    virtual void finish() = 0;
};

}  // namespace standin::sim
