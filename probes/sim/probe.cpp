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

const probe_range* range_holding(const probe_range& used, int64_t peak_na) {
    for (const probe_range* range : {&low_range, &high_range}) {
        if (range->full_scale_na >= peak_na && range->full_scale_na > used.full_scale_na) {
            return range;
        }
    }
    return nullptr;
}

}  // namespace standin::sim
