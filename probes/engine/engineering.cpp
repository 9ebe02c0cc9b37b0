#include "engine/engineering.h"

#include <cmath>
#include <cstdio>

namespace standin::sim {

std::string si_text(double value, std::string_view unit) {
    static constexpr const char* prefixes[] = {"p", "n", "u", "m", "", "k"};
    int index = 4;
    double scaled = value;
    if (scaled != 0.0) {
        while (std::fabs(scaled) < 1.0 && index > 0) {
            scaled *= 1000.0;
            --index;
        }
        while (std::fabs(scaled) >= 1000.0 && index < 5) {
            scaled /= 1000.0;
            ++index;
        }
        // Rounding may carry into the next prefix: 999.96 m is 1.000.
        if (std::fabs(scaled) >= 999.95 && index < 5) {
            scaled /= 1000.0;
            ++index;
        }
    }
    const double magnitude = std::fabs(scaled);
    const int decimals = magnitude >= 100.0 ? 1 : magnitude >= 10.0 ? 2 : 3;
    char text[64];
    std::snprintf(text, sizeof text, "%.*f %s", decimals, scaled, prefixes[index]);
    return text + std::string(unit);
}

std::string current_text(int64_t na) {
    static constexpr struct {
        int64_t size;
        const char* name;
    } units[] = {{1'000'000'000, "A"}, {1'000'000, "mA"}, {1'000, "uA"}, {1, "nA"}};
    for (const auto& unit : units) {
        if (na % unit.size == 0) {
            return std::to_string(na / unit.size) + " " + unit.name;
        }
    }
    return std::to_string(na) + " nA";
}

}  // namespace standin::sim
