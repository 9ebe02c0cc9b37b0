#include "common/board_file.h"

#include <gtest/gtest.h>

#include "common/text_input.h"
#include "scratch_dir.h"

namespace {

using standin::board_model;
using standin::parse_board;

TEST(board_file, reads_every_field) {
    const board_model board = parse_board(standin_test::plain_board, "plain.dat");
    EXPECT_EQ(board.target, "plain");
    EXPECT_EQ(board.supply_uv, 2000000);
    EXPECT_EQ(board.trigger_delay_us, 30000);
    ASSERT_EQ(board.modes.size(), 2u);
    EXPECT_EQ(board.modes[1].name, "idle");
    EXPECT_EQ(board.modes[1].current_na, 100000);
    EXPECT_EQ(board.modes[1].time_us, 8000);
    ASSERT_EQ(board.modes[1].code.size(), 2u);
    EXPECT_EQ(board.modes[1].code[1].function, "poll");
    EXPECT_EQ(board.modes[1].code[1].share, 4000u);
    EXPECT_EQ(board.modes[1].code[1].region, 2u);  // Defined below the mode.
    EXPECT_EQ(board.functions[2].start, 0x3000u);
    EXPECT_EQ(board.functions[2].end, 0x3080u);
    EXPECT_EQ(board.cycle_us(), 10000);
}

TEST(board_file, what_it_renders_reads_back_the_same) {
    const board_model board = parse_board(standin_test::plain_board, "plain.dat");
    const std::string text = standin::render_board(board, "plain.tgcfg");
    EXPECT_EQ(standin::render_board(parse_board(text, "again.dat"), "plain.tgcfg"), text);
}

struct malformed_case {
    const char* name;
    std::string content;
    const char* message;  // The whole what() of the error.
};

class malformed_boards : public testing::TestWithParam<malformed_case> {};

TEST_P(malformed_boards, are_refused_with_file_and_line) {
    const malformed_case& c = GetParam();
    try {
        parse_board(c.content, "b.dat");
        FAIL() << "accepted";
    } catch (const standin::input_error& e) {
        EXPECT_STREQ(e.what(), c.message);
    }
}

const std::string head = "board 1\ntarget t\nsupply_uv 3300000\n";

INSTANTIATE_TEST_SUITE_P(
    table, malformed_boards,
    testing::Values(
        malformed_case{"empty", "",
                       "b.dat:1: expected 'board 1' as the first line of a board configuration"},
        malformed_case{"no_format_line", "# c\ntarget t\n",
                       "b.dat:2: expected 'board 1' as the first line of a board configuration"},
        malformed_case{"other_version", "board 2\n",
                       "b.dat:1: expected 'board 1' as the first line of a board configuration"},
        malformed_case{"unknown_key", head + "colour red\nmode a 1 1\n",
                       "b.dat:4: unknown keyword 'colour'"},
        malformed_case{"twice", head + "supply_uv 1\nmode a 1 1\n",
                       "b.dat:4: supply_uv is given twice"},
        malformed_case{"no_modes", head, "b.dat:3: no mode is given"},
        malformed_case{"no_supply", "board 1\ntarget t\nmode a 1 1\n",
                       "b.dat:3: no supply_uv is given"},
        malformed_case{"supply_zero", "board 1\nsupply_uv 0\n",
                       "b.dat:2: supply_uv must be a whole number from 1 to 100000000, not '0'"},
        malformed_case{"supply_fraction", "board 1\nsupply_uv 3.3\n",
                       "b.dat:2: supply_uv must be a whole number from 1 to 100000000, not '3.3'"},
        malformed_case{"mode_short", head + "mode a 1\n",
                       "b.dat:4: expected 'mode <name> <nanoamperes> <microseconds> "
                       "[<function>:<share>...]'"},
        malformed_case{
            "mode_time_zero", head + "mode a 5 0\n",
            "b.dat:4: the mode's time must be a whole number from 1 to 3600000000, not '0'"},
        malformed_case{"mode_negative_current", head + "mode a -5 10\n",
                       "b.dat:4: the mode's current must be a whole number from 0 to 100000000000, "
                       "not '-5'"},
        malformed_case{"mode_twice", head + "mode a 1 1\nmode a 2 2\n",
                       "b.dat:5: mode 'a' is given twice"},
        malformed_case{"share_sum",
                       head + "mode a 1 1 f:5000 g:4000\nfunction f 0 2\nfunction g 2 4\n",
                       "b.dat:4: the shares of mode 'a' add up to 9000, not 10000"},
        malformed_case{"share_form", head + "mode a 1 1 f\n",
                       "b.dat:4: expected '<function>:<share>', not 'f'"},
        malformed_case{"undefined_function", head + "mode a 1 1 f:10000\n",
                       "b.dat:4: function 'f' is not defined"},
        malformed_case{"empty_region", head + "mode a 1 1\nfunction f 0x10 0x10\n",
                       "b.dat:5: expected a start and a larger end address, such as 0x08000400 "
                       "0x08000480"},
        malformed_case{"bad_name", "board 1\ntarget a/b\n",
                       "b.dat:2: the target name may hold letters, digits, '_', '-' and '.' only"}),
    [](const testing::TestParamInfo<malformed_case>& param_info) { return param_info.param.name; });

TEST(board_file, a_missing_file_is_named) {
    standin_test::scratch_dir dir;
    try {
        standin::read_board_file(dir.file("none.dat"));
        FAIL() << "accepted";
    } catch (const standin::input_error& e) {
        EXPECT_EQ(std::string(e.what()),
                  "cannot read " + dir.file("none.dat") + ": No such file or directory");
    }
}

}  // namespace
