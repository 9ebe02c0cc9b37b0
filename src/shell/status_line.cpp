#include "shell/status_line.h"

#include <cmath>
#include <cstdio>
#include <iterator>

#include "utilities/uterminal.h"

namespace {

constexpr std::string_view separator = "  |  ";
constexpr std::string_view input_note = " (input waits until the use cases end)";

std::string with_thousands(uint64_t value) {
    std::string digits = std::to_string(value);
    for (std::size_t at = digits.size(); at > 3; at -= 3) {
        digits.insert(at - 3, ",");
    }
    return digits;
}

// Three significant digits under the largest fitting prefix: "2.47 mA".
std::string engineering(double value, const char* unit) {
    static constexpr const char* prefixes[] = {"", "m", "u", "n"};
    std::size_t prefix = 0;
    while (prefix + 1 < std::size(prefixes) && value != 0.0 && std::abs(value) < 1.0) {
        value *= 1000.0;
        ++prefix;
    }
    const int decimals = std::abs(value) < 10.0 ? 2 : std::abs(value) < 100.0 ? 1 : 0;
    char text[48];
    std::snprintf(text, sizeof text, "%.*f %s%s", decimals, value, prefixes[prefix], unit);
    return text;
}

}  // namespace

std::string describe_run(std::string_view name, int64_t elapsed_ms, int32_t limit_ms,
                         const run_figures& figures) {
    char time[64];
    std::snprintf(time, sizeof time, " %.1f s", static_cast<double>(elapsed_ms) / 1000.0);
    std::string text = std::string(name) + time;
    if (limit_ms > 0) {
        std::snprintf(time, sizeof time, " / %g s", limit_ms / 1000.0);
        text += time;
    }
    std::vector<std::string> parts;
    if (figures.samples) {
        parts.push_back(with_thousands(*figures.samples) + " samples");
    }
    if (figures.mean_current_a) {
        parts.push_back("mean " + engineering(*figures.mean_current_a, "A"));
    }
    if (figures.energy_j) {
        parts.push_back(engineering(*figures.energy_j, "J"));
    }
    for (std::size_t index = 0; index < parts.size(); ++index) {
        text += (index == 0 ? ": " : ", ") + parts[index];
    }
    return text;
}

std::string fit_width(std::string text, int32_t width) {
    // A line as wide as the terminal wraps at once, or leaves the cursor in
    // the last column, where a carriage return may not bring it back.
    if (width > 1 && text.size() >= static_cast<std::size_t>(width)) {
        text.resize(static_cast<std::size_t>(width) - 1);
    } else if (width == 1) {
        text.clear();
    }
    return text;
}

void status_line::update(const std::vector<running_use_case>& running) {
    if (running.empty()) {
        quiet();
        return;
    }
    const auto now = std::chrono::steady_clock::now();
    if (!active) {
        active = true;
        started = now;
    }
    if (!input_noticed && VX_UTL::uTerminal::input_waiting()) {
        input_noticed = true;
    }
    const int64_t elapsed =
        std::chrono::duration_cast<std::chrono::milliseconds>(now - started).count();
    std::string text;
    for (const running_use_case& use_case : running) {
        if (!text.empty()) {
            text += separator;
        }
        text += describe_run(use_case.name, elapsed, use_case.duration, use_case.command.figures());
    }
    if (input_noticed) {
        text += input_note;
    }
    screen.show(fit_width(text, VX_UTL::uTerminal::width()));
}

void status_line::quiet() {
    screen.hide();
}

void status_line::done() {
    screen.end();
    active = false;
    input_noticed = false;
}
