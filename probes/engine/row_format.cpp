#include "engine/row_format.h"

namespace standin::sim {

namespace {

constexpr std::string_view columns[] = {"sample",   "time_s",  "current_A", "voltage_V", "power_W",
                                        "energy_J", "clipped", "pc",        "function"};

}  // namespace

row_layout make_row_layout(bool gnuplot, bool trace_plus, int32_t rate) {
    row_layout layout;
    layout.separator = gnuplot ? ' ' : ',';
    layout.trace_plus = trace_plus;
    layout.rate = rate;
    // The fewest decimals (at least 3) that give every sample its exact
    // start time; for a rate such as 3 per second, two more than the rate has
    // digits.
    int decimals = 3;
    while (decimals <= 9 && detail::powers_of_ten[decimals] % static_cast<uint64_t>(rate) != 0) {
        ++decimals;
    }
    if (decimals > 9) {
        decimals = detail::digit_count(static_cast<uint64_t>(rate)) + 2;
        decimals = decimals > 9 ? 9 : decimals;
    }
    layout.time_decimals = decimals;
    layout.time_scale = detail::powers_of_ten[decimals];
    const auto r = static_cast<uint64_t>(rate);
    layout.time_step = layout.time_scale % r == 0 ? layout.time_scale / r : 0;
    return layout;
}

std::string capture_header(const row_layout& layout, const header_facts& facts) {
    const size_t count = layout.trace_plus ? 9 : 7;
    std::string text;
    if (layout.separator == ',') {
        for (size_t i = 0; i < count; ++i) {
            text += i == 0 ? "" : ",";
            text += columns[i];
        }
        return text + "\n";
    }
    text += "# Probe simulator capture of " + std::string(facts.target) + " (" +
            std::string(facts.config) + ")\n";
    text += "# " + std::to_string(layout.rate) + " samples/s, range " + std::string(facts.range) +
            " (full scale " + current_text(facts.full_scale_na) + ", resolution " +
            current_text(facts.resolution_na) + "), trace mode " + std::string(facts.trace_mode) +
            "\n";
    text += "# columns:";
    for (size_t i = 0; i < count; ++i) {
        text += " " + std::to_string(i + 1) + ":" + std::string(columns[i]);
    }
    return text + "\n";
}

}  // namespace standin::sim
