#include "tgcfgsetup/converter.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <sstream>

#include "common/text_input.h"
#include "scratch_dir.h"
#include "tgcfgsetup/target_file.h"

namespace {

using standin_test::read_file;
using standin_test::scratch_dir;

const std::string demo_dir = std::string(ZELNO_SOURCE_DIR) + "/demo/";

const std::string small_target =
    "[target]\nname = t\nsupply = 1.8 V\n\n"
    "[mode run]\ncurrent = 2 mA\ntime = 1 ms\ncode = main\n\n"
    "[code]\nmain = 0x100 0x20\n";

TEST(converter, the_demo_target_gives_the_demo_board) {
    scratch_dir dir;
    std::ostringstream errors;
    ASSERT_EQ(
        standin::convert_target_file(demo_dir + "target.tgcfg", dir.file("ws_board.dat"), errors),
        0)
        << errors.str();
    EXPECT_EQ(read_file(dir.file("ws_board.dat")), read_file(demo_dir + "board.dat"));
    EXPECT_EQ(errors.str(), "");
}

TEST(converter, reads_units_and_shares) {
    const standin::board_model board = standin::parse_target(
        "[target]\nname = t\nsupply = 1800 mV\nsource_resistance = 250 mohm\nnoise = 150 ppm\n"
        "noise_floor = 0.02 uA\ntrigger_delay = 1.5 s\n"
        "[mode a]\ncurrent = 0.5 A\ntime = 250 us\ncode = f 12.5 %, g 87.5%\n"
        "[code]\nf = 0x10 16\ng = 32 0x10\n",
        "t.tgcfg");
    EXPECT_EQ(board.supply_uv, 1800000);
    EXPECT_EQ(board.source_resistance_mohm, 250);
    EXPECT_EQ(board.noise_ppm, 150);
    EXPECT_EQ(board.noise_floor_na, 20);
    EXPECT_EQ(board.trigger_delay_us, 1500000);
    EXPECT_EQ(board.modes[0].current_na, 500000000);
    EXPECT_EQ(board.modes[0].time_us, 250);
    EXPECT_EQ(board.modes[0].code[0].share, 1250u);
    EXPECT_EQ(board.modes[0].code[1].share, 8750u);
    EXPECT_EQ(board.functions[1].start, 32u);
    EXPECT_EQ(board.functions[1].end, 48u);
}

struct malformed_case {
    const char* name;
    std::string content;
    const char* message;  // Behind "tgcfgsetup: <file>:".
};

class malformed_targets : public testing::TestWithParam<malformed_case> {};

// Each is refused with one message naming file and line, and leaves no
// file behind: neither the output nor a temporary one.
TEST_P(malformed_targets, are_refused_and_leave_no_file) {
    const malformed_case& c = GetParam();
    scratch_dir dir;
    const std::string input = dir.write("t.tgcfg", c.content);
    std::ostringstream errors;
    EXPECT_EQ(standin::convert_target_file(input, dir.file("ws_board.dat"), errors), 1);
    EXPECT_EQ(errors.str(), "tgcfgsetup: " + input + ":" + c.message + "\n");
    EXPECT_EQ(dir.names(), std::vector<std::string>{"t.tgcfg"});
}

INSTANTIATE_TEST_SUITE_P(
    table, malformed_targets,
    testing::Values(
        malformed_case{"empty", "", "1: no [target] section"},
        malformed_case{"before_section", "name = t\n", "1: 'name' stands before the first section"},
        malformed_case{
            "unknown_section", "[board]\n",
            "1: unknown section '[board]'; sections are [target], [mode <name>] and [code]"},
        malformed_case{"open_header", "[target\n", "1: a section header ends in ']'"},
        malformed_case{"no_equals", "[target]\nname t\n",
                       "2: expected '<key> = <value>' or a section header such as [target]"},
        malformed_case{"no_value", "[target]\nname =\n", "2: name has no value"},
        malformed_case{"unit_missing", "[target]\nsupply = 3.3\n",
                       "2: supply needs a unit: V, mV or uV, not '3.3'"},
        malformed_case{"unit_wrong", "[target]\nsupply = 3.3 mA\n",
                       "2: supply needs a unit: V, mV or uV, not '3.3 mA'"},
        malformed_case{"too_fine", "[target]\nsupply = 3.3000001 V\n",
                       "2: supply: '3.3000001 V' is finer than the simulator resolves"},
        malformed_case{"unknown_key", "[target]\ncolour = red\n",
                       "2: unknown key 'colour' in [target]; keys are name, supply, "
                       "source_resistance, noise, noise_floor and trigger_delay"},
        malformed_case{"key_twice", "[target]\nname = a\nname = b\n", "3: name is given twice"},
        malformed_case{"no_supply", "[target]\nname = t\n[mode a]\ncurrent = 1 mA\ntime = 1 ms\n",
                       "5: [target] has no supply"},
        malformed_case{"no_mode", "[target]\nname = t\nsupply = 1 V\n",
                       "3: no [mode <name>] section"},
        malformed_case{"mode_without_time",
                       "[target]\nname = t\nsupply = 1 V\n[mode a]\ncurrent = 1 mA\n[code]\n",
                       "4: mode 'a' has no time"},
        malformed_case{"mode_twice",
                       "[target]\nname = t\nsupply = 1 V\n[mode a]\ncurrent = 1 mA\ntime = 1 ms\n"
                       "[mode a]\n",
                       "7: section [mode a] is given twice"},
        malformed_case{"shares_short", "[target]\n[mode a]\ncode = f 50 %, g 40 %\n",
                       "3: the shares of the code list add up to 90.00 %, not 100 %"},
        malformed_case{"share_missing", "[target]\n[mode a]\ncode = f, g 40 %\n",
                       "3: give each function of the code list its share, such as 'main 60 %'"},
        malformed_case{"function_undefined",
                       "[target]\nname = t\nsupply = 1 V\n[mode a]\ncurrent = 1 mA\ntime = 1 ms\n"
                       "code = f\n",
                       "4: function 'f' of mode 'a' is not in [code]"},
        malformed_case{"region_form", "[code]\nf = 0x100\n",
                       "2: expected '<function> = <start address> <size in bytes>', such as "
                       "'main = 0x08000400 0x80'"},
        malformed_case{"region_empty", "[code]\nf = 0x100 0\n",
                       "2: expected '<function> = <start address> <size in bytes>', such as "
                       "'main = 0x08000400 0x80'"}),
    [](const testing::TestParamInfo<malformed_case>& param_info) { return param_info.param.name; });

TEST(converter, a_failed_conversion_leaves_an_older_output_untouched) {
    scratch_dir dir;
    const std::string output = dir.write("ws_board.dat", "older\n");
    std::ostringstream errors;
    EXPECT_EQ(standin::convert_target_file(dir.write("t.tgcfg", "[nonsense]\n"), output, errors),
              1);
    EXPECT_EQ(read_file(output), "older\n");
}

TEST(converter, missing_input_and_unwritable_output_are_named) {
    scratch_dir dir;
    std::ostringstream errors;
    EXPECT_EQ(standin::convert_target_file(dir.file("none.tgcfg"), dir.file("out.dat"), errors), 1);
    EXPECT_EQ(errors.str(), "tgcfgsetup: cannot read " + dir.file("none.tgcfg") +
                                ": No such file or directory\n");

    errors.str("");
    const std::string input = dir.write("t.tgcfg", small_target);
    const std::string output = dir.file("no/such/dir/out.dat");
    EXPECT_EQ(standin::convert_target_file(input, output, errors), 1);
    EXPECT_EQ(errors.str(), "tgcfgsetup: cannot write " + output + ": No such file or directory\n");
    EXPECT_EQ(dir.names(), std::vector<std::string>{"t.tgcfg"});
}

// The library as zelno loads it: the name with C linkage, the strings by value.
TEST(converter, the_built_library_exports_the_conversion) {
    void* library = dlopen(ZELNO_LIBRARY_DIR "/libtgcfgsetup.so", RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    using convert_fn = int (*)(std::string, std::string);
    const auto convert = reinterpret_cast<convert_fn>(dlsym(library, "TGCFGToBoardConfigFile"));
    ASSERT_NE(convert, nullptr);
    scratch_dir dir;
    EXPECT_EQ(convert(dir.write("t.tgcfg", small_target), dir.file("ws_board.dat")), 0);
    EXPECT_NE(read_file(dir.file("ws_board.dat")).find("mode run 2000000 1000 main:10000\n"),
              std::string::npos);
    testing::internal::CaptureStderr();
    EXPECT_NE(convert(dir.file("none.tgcfg"), dir.file("other.dat")), 0);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("none.tgcfg"), std::string::npos);
    dlclose(library);
}

}  // namespace
