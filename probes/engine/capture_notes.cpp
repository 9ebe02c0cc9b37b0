// What a capture says before it starts: that the window drops older rows,
// and when the size cap would end it before it holds what it was asked to.

#include <algorithm>
#include <cstdio>
#include <string>

#include "engine/capture.h"

namespace standin::sim {

namespace {

constexpr uint64_t mebibyte = 1024 * 1024;

// The longest row among the modes' when `samples` rows have been written:
// the sample index, the time and the energy have their digits of then.
size_t row_size_estimate(const capture_settings& settings, const row_layout& layout,
                         const sample_source& source, uint64_t samples) {
    const sample_source::size_hint hint = source.largest_periods();
    const uint64_t rate = static_cast<uint64_t>(settings.rate);
    const sample_time time{samples / rate, samples % rate};
    int64_t top_power_nw = 0;
    for (const period_sample& period : hint.periods) {
        top_power_nw = std::max(top_power_nw, period.power_nw);
    }
    const auto seconds = static_cast<int64_t>(samples / rate + 1);
    const int64_t energy_nj =
        top_power_nw > INT64_MAX / seconds ? INT64_MAX : top_power_nw * seconds;
    size_t longest = 0;
    char row[max_row_size + 64];
    for (const period_sample& period : hint.periods) {
        char* end = put_row(row, layout, samples, time, period, energy_nj);
        size_t size = static_cast<size_t>(end - row) + 1 + hint.slack;  // With its line feed.
        if (settings.trace_plus) {
            const size_t name =
                period.function == no_function
                    ? 1  // "-" in a mode without code.
                    : std::max<size_t>(1, settings.board.functions[period.function].name.size());
            size += static_cast<size_t>(put_trace(row, layout, period.pc, "") - row) + name;
        }
        longest = std::max(longest, size);
    }
    return longest;
}

std::string seconds_text(double seconds) {
    char text[32];
    std::snprintf(text, sizeof text, seconds < 10 ? "%.2g s" : "%.0f s", seconds);
    return text;
}

}  // namespace

std::string capture::start_notes() const {
    const uint64_t rate = static_cast<uint64_t>(settings_.rate);
    const bool limited = settings_.duration_ms > 0;
    const uint64_t asked = limited ? static_cast<uint64_t>(settings_.duration_ms) * rate / 1000 : 0;
    std::string notes;
    // Rows beyond the window wait for a rewrite until they are a quarter of
    // it, and more come while the rewrite copies: an eighth is allowed for.
    uint64_t samples = asked;
    bool whole_window = false;
    if (windowed()) {
        const uint64_t held = window_samples_ + window_samples_ / 4 + window_samples_ / 8;
        whole_window = !limited || asked > held;
        samples = whole_window ? held : asked;
        if (!limited || asked > window_samples_) {
            notes += "wattscope: note: " + settings_.output + " keeps the last " +
                     std::to_string(settings_.window_ms / 1000) + " s of samples (range " +
                     settings_.range + "); --saveall keeps them all\n";
        }
    }
    if (samples == 0) {
        return notes;  // Every sample and no end: the cap ends it, as documented.
    }
    const uint64_t row = row_size_estimate(settings_, layout_, *source_, samples);
    const uint64_t needed = header_.size() + samples * row;
    const auto cap = static_cast<uint64_t>(settings_.max_bytes);
    if (needed > cap) {
        const std::string what =
            whole_window ? "the " + std::to_string(settings_.window_ms / 1000) + " s window"
                         : seconds_text(static_cast<double>(samples) / static_cast<double>(rate)) +
                               " of samples";
        const double lasts = static_cast<double>((cap - std::min(cap, header_.size())) / row) /
                             static_cast<double>(rate);
        notes += "wattscope: note: " + what + " at " + std::to_string(rate) +
                 " samples/s takes about " + std::to_string((needed + mebibyte - 1) / mebibyte) +
                 " MiB, more than --maxoutsize " + std::to_string(cap / mebibyte) +
                 ": the size limit would end the capture after about " + seconds_text(lasts) +
                 "; --maxoutsize " + std::to_string((needed + mebibyte - 1) / mebibyte) +
                 " holds it\n";
    }
    return notes;
}

}  // namespace standin::sim
