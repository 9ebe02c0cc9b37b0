#include "sim/probe.h"

namespace standin::sim {

const probe_range* find_range(std::string_view name) {
    for (const probe_range* range : {&low_range, &high_range}) {
        if (range->name == name) {
            return range;
        }
    }
    return nullptr;
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

const probe_range* range_holding(const probe_range& used, int64_t peak_na) {
    for (const probe_range* range : {&low_range, &high_range}) {
        if (range->full_scale_na >= peak_na && range->full_scale_na > used.full_scale_na) {
            return range;
        }
    }
    return nullptr;
}

}  // namespace standin::sim
