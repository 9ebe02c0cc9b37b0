#include "engine/function_marks.h"

#include <algorithm>

namespace standin::sim {

std::vector<std::string> attribution_names(const board_model& board) {
    std::vector<std::string> names;
    names.reserve(board.functions.size() + board.modes.size());
    for (const code_region& region : board.functions) {
        names.push_back(region.name);
    }
    for (const operating_mode& mode : board.modes) {
        names.push_back(mode.name);
    }
    return names;
}

size_t sleep_mode_of(const board_model& board) {
    size_t sleep = 0;
    for (size_t m = 0; m < board.modes.size(); ++m) {
        if (board.modes[m].current_na < board.modes[sleep].current_na) {
            sleep = m;
        }
    }
    return sleep;
}

namespace {

bool lists(const operating_mode& mode, size_t region) {
    return std::any_of(mode.code.begin(), mode.code.end(),
                       [&](const mode_code& code) { return code.region == region; });
}

}  // namespace

marker_map map_markers(const board_model& board) {
    marker_map map;
    map.function.fill(no_function);
    map.mark.fill(mode_mark::unknown);
    if (board.trigger_input) {
        map.code_inputs = static_cast<uint8_t>(~(1u << *board.trigger_input));
    }
    const size_t sleep = sleep_mode_of(board);
    for (const code_marker& marker : board.markers) {
        uint32_t attribution = no_function;
        bool asleep = false;
        for (size_t f = 0; f < board.functions.size(); ++f) {
            if (board.functions[f].name == marker.name) {
                attribution = static_cast<uint32_t>(f);
                bool elsewhere = false;
                for (size_t m = 0; m < board.modes.size(); ++m) {
                    elsewhere = elsewhere || (m != sleep && lists(board.modes[m], f));
                }
                asleep = !board.modes.empty() && lists(board.modes[sleep], f) && !elsewhere;
            }
        }
        for (size_t m = 0; m < board.modes.size() && attribution == no_function; ++m) {
            if (board.modes[m].name == marker.name) {
                attribution = static_cast<uint32_t>(board.functions.size() + m);
                asleep = m == sleep;
            }
        }
        map.function[marker.code & 0xff] = attribution;
        map.mark[marker.code & 0xff] = asleep ? mode_mark::sleep : mode_mark::active;
    }
    return map;
}

}  // namespace standin::sim
