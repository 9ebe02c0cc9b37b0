#include "engine/row_format.h"

#include <iterator>
#include <vector>

namespace standin::sim {

namespace {

constexpr std::string_view columns[] = {"sample",    "time_s",        "current_A",
                                        "voltage_V", "power_W",       "energy_J",
                                        "clipped",   "current_min_A", "current_max_A"};
constexpr std::string_view trace_columns[] = {"pc", "function"};

}  // namespace

row_layout make_row_layout(bool gnuplot, bool trace_plus, bool min_max, int32_t rate) {
    row_layout layout;
    layout.separator = gnuplot ? ' ' : ',';
    layout.trace_plus = trace_plus;
    layout.min_max = min_max;
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

size_t column_count(const row_layout& layout) {
    return 7 + (layout.min_max ? 2 : 0) + (layout.trace_plus ? 2 : 0);
}

std::string capture_header(const row_layout& layout, std::string_view description) {
    std::vector<std::string_view> names(columns, columns + (layout.min_max ? 9 : 7));
    if (layout.trace_plus) {
        names.insert(names.end(), std::begin(trace_columns), std::end(trace_columns));
    }
    std::string text;
    if (layout.separator == ',') {
        for (size_t i = 0; i < names.size(); ++i) {
            text += i == 0 ? "" : ",";
            text += names[i];
        }
        return text + "\n";
    }
    text += description;
    text += "# columns:";
    for (size_t i = 0; i < names.size(); ++i) {
        text += " " + std::to_string(i + 1) + ":" + std::string(names[i]);
    }
    return text + "\n";
}

}  // namespace standin::sim
