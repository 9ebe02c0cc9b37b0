#include "engine/function_marks.h"

#include <gtest/gtest.h>

#include "common/board_file.h"

namespace {

using standin::sim::mode_mark;
using standin::sim::no_function;

// What each code means: a function or a mode, and sleep only where nothing
// but the sleep mode runs it. D7 is the trigger input, so it carries no code.
TEST(marker_map, codes_name_functions_and_modes_and_sleep_only_for_the_sleep_mode) {
    const standin::board_model board = standin::parse_board(
        "board 1\ntarget t\nsupply_uv 2000000\ntrigger_input D7\n"
        "mode run 1000000 2000 work:5000 both:5000\nmode nap 100000 8000 wait:6000 both:4000\n"
        "mode deep 100000 8000\n"
        "function work 0 1\nfunction wait 1 2\nfunction both 2 3\nfunction spare 3 4\n"
        "marker 1 work\nmarker 2 wait\nmarker 3 both\nmarker 4 spare\nmarker 5 nap\n"
        "marker 6 run\nmarker 7 deep\n",
        "b.dat");
    const standin::sim::marker_map map = standin::sim::map_markers(board);
    EXPECT_EQ(map.code_inputs, 0x7f);
    const struct {
        uint8_t code;
        uint32_t function;  // Functions first, then modes.
        mode_mark mark;
    } rows[] = {
        {0, no_function, mode_mark::unknown},
        {1, 0, mode_mark::active},
        {2, 1, mode_mark::sleep},
        {3, 2, mode_mark::active},
        {4, 3, mode_mark::active},
        {5, 4 + 1, mode_mark::sleep},
        {6, 4 + 0, mode_mark::active},
        {7, 4 + 2, mode_mark::active},
        {8, no_function, mode_mark::unknown},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(map.function[row.code], row.function) << int(row.code);
        EXPECT_EQ(map.mark[row.code], row.mark) << int(row.code);
    }
    EXPECT_EQ(standin::sim::attribution_names(board).at(4 + 2), "deep");
}

}  // namespace
