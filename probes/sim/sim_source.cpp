#include "sim/sim_source.h"

#include <algorithm>

#include "engine/engineering.h"
#include "engine/function_marks.h"
#include "sim/pacing.h"

namespace standin::sim {

namespace {

const probe_range& range_named(const std::string& name) {
    const probe_range* range = find_range(name);
    return range == nullptr ? low_range : *range;
}

}  // namespace

sim_source::sim_source(source_request request)
    : request_(std::move(request)),
      range_(range_named(request_.range)),
      model_(request_.board, request_.rate),
      front_(request_.board, range_) {
    const std::vector<operating_mode>& modes = request_.board.modes;
    sleep_mode_ = static_cast<uint32_t>(sleep_mode_of(request_.board));
    for (uint32_t m = 0; m < modes.size(); ++m) {
        std::vector<uint32_t> shares;
        std::vector<uint32_t> regions;
        uint32_t sum = 0;
        for (const mode_code& code : modes[m].code) {
            sum += code.share;
            shares.push_back(sum);
            regions.push_back(static_cast<uint32_t>(code.region));
        }
        mode_shares_.push_back(std::move(shares));
        mode_regions_.push_back(std::move(regions));
    }
}

std::string sim_source::describe(std::string_view trace_mode) const {
    return "# Probe simulator capture of " + request_.board.target + " (" + request_.config_name +
           ")\n# " + std::to_string(request_.rate) + " samples/s, range " +
           std::string(range_.name) + " (full scale " + current_text(range_.full_scale_na) +
           ", resolution " + current_text(range_.resolution_na) + "), trace mode " +
           std::string(trace_mode) + "\n";
}

sample_source::size_hint sim_source::largest_periods() const {
    board_model quiet = request_.board;
    quiet.noise_ppm = 0;
    quiet.noise_floor_na = 0;
    front_end probe(quiet, range_);
    size_hint hint;
    for (const operating_mode& mode : quiet.modes) {
        const reading r = probe.measure(mode.current_na);
        period_sample s;
        s.current_na = r.current_na, s.voltage_uv = r.voltage_uv, s.power_nw = r.power_nw;
        s.clipped = r.clipped;
        for (const mode_code& code : mode.code) {
            const code_region& region = quiet.functions[code.region];
            if (s.function == no_function ||
                region.name.size() > quiet.functions[s.function].name.size()) {
                s.function = static_cast<uint32_t>(code.region);
            }
            s.pc = std::max(s.pc, region.end);
        }
        hint.periods.push_back(s);
    }
    // Noise may give a small reading a minus sign, in current and power.
    hint.slack = request_.board.noise_ppm != 0 || request_.board.noise_floor_na != 0 ? 2 : 0;
    return hint;
}

void sim_source::start(clock::time_point now) {
    start_ =
        request_.trigger ? now + std::chrono::microseconds(*request_.board.trigger_delay_us) : now;
}

sample_source::ready_periods sim_source::poll(clock::time_point now) {
    if (now < start_) {
        return {};
    }
    const uint64_t due = periods_in(now - start_, request_.rate);
    const uint64_t backlog = static_cast<uint64_t>(request_.rate) * backlog_limit_ms / 1000;
    ready_periods got;
    if (due > handed_ + backlog) {
        got.lost = due - backlog - handed_;
        model_.skip(got.lost);
        handed_ += got.lost;
    }
    got.ready = due - handed_;
    return got;
}

clock::time_point sim_source::next_ready_at() const {
    return start_ + end_of_periods(handed_ + 1, request_.rate);
}

void sim_source::take(period_sample* into, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        const target_model::interval interval = model_.next();
        const reading r = front_.measure(interval.mean_na);
        period_sample& s = into[i];
        s.current_na = r.current_na;
        s.voltage_uv = r.voltage_uv;
        s.power_nw = r.power_nw;
        s.clipped = r.clipped;
        s.mark = interval.mode == sleep_mode_ ? mode_mark::sleep : mode_mark::active;
        if (r.clipped) {
            clipped_peak_na_ = std::max(clipped_peak_na_, interval.mean_na);
        }
        if (request_.trace_plus) {
            place_pc(interval.mode, s);
        }
    }
    handed_ += count;
}

void sim_source::place_pc(uint32_t mode, period_sample& s) {
    const std::vector<uint32_t>& shares = mode_shares_[mode];
    if (shares.empty()) {
        s.function = no_function;
        s.pc = 0;
        return;
    }
    const uint64_t r = front_.noise().next();
    const auto pick = static_cast<uint32_t>((r & 0xFFFFFFFF) % 10000);
    size_t i = 0;
    while (shares[i] <= pick) {
        ++i;
    }
    s.function = mode_regions_[mode][i];
    const code_region& region = request_.board.functions[s.function];
    s.pc = (region.start + (r >> 32) % (region.end - region.start)) & ~uint64_t{1};
    s.pc = std::max(s.pc, region.start);
}

clip_advice sim_source::clipping() const {
    const probe_range* larger = range_holding(range_, clipped_peak_na_);
    return {range_.full_scale_na, larger == nullptr ? std::string() : std::string(larger->name)};
}

}  // namespace standin::sim
