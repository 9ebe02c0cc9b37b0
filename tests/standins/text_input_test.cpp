#include "common/text_input.h"

#include <gtest/gtest.h>

#include <tuple>

#include "common/units.h"
#include "scratch_dir.h"

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

}  // namespace
