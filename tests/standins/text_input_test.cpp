#include "common/text_input.h"

#include <gtest/gtest.h>

#include <tuple>

#include "common/board_file.h"
#include "common/units.h"
#include "engine/test_file.h"
#include "scratch_dir.h"
#include "tgcfgsetup/target_file.h"

namespace {

TEST(text_input, numbers_convert_exactly_or_say_why_not) {
    using enum standin::number_problem;
    const std::tuple<const char*, int, int64_t, standin::number_problem> cases[] = {
        {"100e-7", 6, 10, none},
        {"1e", 0, 0, not_a_number},
        {"15e-1", 0, 0, too_fine},
        {"9223372036854775807", 1, 0, too_large},
        {"1e308", 6, 0, too_large}};
    for (const auto& [text, decimals, value, problem] : cases) {
        const standin::fixed_number got = standin::read_fixed(text, decimals);
        EXPECT_EQ(got.problem, problem) << text;
        EXPECT_EQ(got.value, value) << text;
    }
    EXPECT_EQ(standin::parse_fixed("1e3", 0), std::nullopt);  // A board file's numbers are plain.
    EXPECT_EQ(standin::parse_quantity("1.5e-3V", standin::dimension::voltage, -6), 1500);
}

// Never a content error for what could not be read, and never a wait on a FIFO.
TEST(text_input, files_that_cannot_be_read_say_why) {
    standin_test::scratch_dir dir;
    std::filesystem::create_directory(dir.file("dir.dat"));
    const std::string fifo = standin_test::make_pipe(dir);
    for (const auto& [name, reason] : {std::pair{dir.file("none.dat"), "No such file or directory"},
                                       {dir.file("dir.dat"), "Is a directory"},
                                       {fifo, "Not a regular file"}}) {
        try {
            standin::read_whole_file(name);
            ADD_FAILURE() << name << " was read";
        } catch (const standin::input_error& e) {
            EXPECT_EQ(e.what(), "cannot read " + name + ": " + reason);
        }
    }
    EXPECT_EQ(standin::read_whole_file(dir.write("a.dat", "abc")), "abc");
}

// Notepad and PowerShell begin UTF-8 text with a byte-order mark; every reader skips it.
TEST(text_input, a_byte_order_mark_is_skipped) {
    const std::string mark = "\xEF\xBB\xBF";
    EXPECT_EQ(standin::parse_board(mark + standin_test::plain_board, "b.dat").target, "plain");
    const std::string target =
        "[target]\nname = t\nsupply = 1 V\n[mode a]\ncurrent = 1 A\ntime = 1 s\n";
    EXPECT_EQ(standin::parse_target(mark + target, "t.tgcfg").target, "t");
    EXPECT_EQ(
        standin::sim::parse_test_description(mark + "rate 5\npeak_current 1 1 A\n", "l.txt").rate,
        5);
}

}  // namespace
