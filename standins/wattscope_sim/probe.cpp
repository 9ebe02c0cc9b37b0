#include "wattscope_sim/probe.h"

namespace standin::sim {

const probe_range* find_range(std::string_view name) {
    for (const probe_range* range : {&low_range, &high_range}) {
        if (range->name == name) {
            return range;
        }
    }
    return nullptr;
}

}  // namespace standin::sim
