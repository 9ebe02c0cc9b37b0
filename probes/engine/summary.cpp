#include <cstdio>

#include "engine/capture.h"
#include "engine/engineering.h"
#include "engine/function_marks.h"

namespace standin::sim {

namespace {

constexpr size_t functions_shown = 5;

const char* end_text(capture_end end) {
    switch (end) {
        case capture_end::duration:
            return "duration reached";
        case capture_end::size_limit:
            return "size limit reached";
        case capture_end::stopped:
            return "stopped";
        case capture_end::source_error:
            return "probe error";
        case capture_end::write_error:
            break;
    }
    return "write error";
}

}  // namespace

std::string capture_summary(const capture_settings& settings, const capture_totals& totals,
                            const clip_advice& clipping) {
    const double rate = settings.rate;
    const double seconds = static_cast<double>(totals.periods) / rate;
    char duration[32];
    std::snprintf(duration, sizeof duration, "%.3f s", seconds);

    std::string line =
        "wattscope: " + settings.output + ": " + std::to_string(totals.rows) + " samples";
    if (totals.rows_kept != totals.rows) {
        line += " (last " + std::to_string(totals.rows_kept) + " kept)";
    }
    line += " in " + std::string(duration) + " (" + end_text(totals.end) + ")";
    const double mean_a =
        totals.rows == 0 ? 0.0 : totals.current_sum_na * 1e-9 / static_cast<double>(totals.rows);
    line += ", mean " + si_text(mean_a, "A");
    line += ", peak " + si_text(static_cast<double>(totals.peak_na) * 1e-9, "A");
    line += ", charge " + si_text(totals.current_sum_na * 1e-9 / rate, "C");
    line += ", energy " + si_text(totals.energy_nj * 1e-9, "J");
    line += ", " + std::to_string(totals.dropped) + " dropped";
    if (totals.clipped > 0) {
        line +=
            ", " + std::to_string(totals.clipped) + " clipped beyond " +
            current_text(clipping.full_scale_na) +
            (clipping.larger_range.empty() ? " (no range holds them)"
                                           : " (range " + clipping.larger_range +
                                                 " holds them: -r " + clipping.larger_range + ")");
    }

    const std::vector<size_t> order =
        settings.trace_plus ? summary_order(totals.functions) : std::vector<size_t>{};
    if (!order.empty()) {
        const std::vector<std::string> names = attribution_names(settings.board);
        line += "; energy by function:";
        for (size_t i = 0; i < order.size() && i < functions_shown; ++i) {
            line += (i == 0 ? " " : ", ") + names[order[i]] + " " +
                    si_text(totals.functions[order[i]].energy_nj * 1e-9, "J");
        }
    }
    if (!totals.table.empty()) {
        line += "; table in " + totals.table;
    }
    return line + "\n";
}

}  // namespace standin::sim
