#include "tgcfgsetup/converter.h"

#include <gtest/gtest.h>

#include <iostream>
#include <sstream>
#include <tuple>

#include "common/board_file.h"
#include "scratch_dir.h"

namespace {

using standin_test::read_file;
using standin_test::scratch_dir;

// The demo files document the formats; they must agree with each other.
TEST(converter, the_demo_target_gives_the_demo_board) {
    scratch_dir dir;
    const std::string demo = std::string(ZELNO_SOURCE_DIR) + "/demo/";
    ASSERT_EQ(standin::convert_target_file(demo + "target.tgcfg", dir.file("b.dat"), std::cerr), 0);
    EXPECT_EQ(read_file(dir.file("b.dat")), read_file(demo + "board.dat"));
}

// What only a probe's source uses reaches the board file; [markers] may stand
// before what it names.
TEST(converter, carries_how_the_target_is_powered_its_trigger_input_and_markers) {
    scratch_dir dir;
    const std::string input =
        dir.write("t.tgcfg",
                  "[markers]\n127 = f\n1 = a\n[target]\nname = t\nsupply = 3.3 V\n"
                  "powered_by = probe\ntrigger_input = D7\n[mode a]\ncurrent = 1 mA\n"
                  "time = 1 ms\n[code]\nf = 0x100 4\n");
    ASSERT_EQ(standin::convert_target_file(input, dir.file("b.dat"), std::cerr), 0);
    const standin::board_model board = standin::read_board_file(dir.file("b.dat"));
    ASSERT_EQ(board.markers.size(), 2u);
    EXPECT_EQ(std::tuple(board.powered_by_probe, board.trigger_input, board.markers[0].code,
                         board.markers[0].name, board.markers[1].name),
              std::tuple(true, 7u, 127u, "f", "a"));
}

// Refused with a message naming file and line; an older output stays as it was.
TEST(converter, malformed_targets_are_refused_and_change_no_file) {
    const std::string head = "[target]\nname = t\nsupply = 1 V\n[mode a]\ncurrent = 1 A\n";
    const std::pair<std::string, std::string> cases[] = {
        {"", "1: no [target] section"},
        {"name = t\n", "1: 'name' stands before the first section"},
        {"[board]\n", "1: unknown section '[board]'"},
        {"[target]\nname t\n", "2: expected '<key> = <value>'"},
        {"[target]\nsupply = 3.3 mA\n", "2: supply needs a unit: V, mV or uV, not '3.3 mA'"},
        {"[target]\nsupply = 3.3000001 V\n", "2: supply: '3.3000001 V' is finer than the"},
        {"[target]\nsupply = 1e308 V\n", "2: supply 1e308 V is out of range"},
        {head, "4: mode 'a' has no time"},
        {"[mode a]\ncode = f 50 %, g 40 %\n", "2: the shares of the code list add up to 90.00 %"},
        {"[mode a]\ncode = f 50 %, f 50 %\n", "2: function 'f' is listed twice"},
        {head + "time = 1 ms\ncode = f\n", "4: function 'f' of mode 'a' is not in [code]"},
        {"[code]\nf = 1 1\nf = 2 1\n", "3: function 'f' is given twice"},
        {"[mode a]\ncode = a 4294967296 %\n", "2: the share of a 4294967296 % is out of range"},
        {"[code]\nf = 0x100 0\n", "2: expected '<function> = <start address> <size in bytes>'"},
        {"[code]\nf = 0x12g 1\n", "2: expected '<function> = <start address>"},
        {"[code]\nf = 0xffffffffffffffff 1\n", "2: expected '<function> = <start address>"},
        {"[target]\npowered_by = usb\n", "2: expected 'powered_by = probe' or 'powered_by = ex"},
        {"[target]\ntrigger_input = D8\n", "2: expected 'trigger_input = D<n>' with n from 0 to 7"},
        {"[target]\nname = t\npowered_by = probe\nsupply = 5.5 V\n[mode a]\ncurrent = 1 A\n"
         "time = 1 s\n",
         "3: powered_by = probe needs a supply from 0.8 V to 5 V"},
        {"[markers]\n0 = a\n", "2: a marker's code must be a whole number from 1 to 255, not '0'"},
        {"[markers]\n256 = a\n", "2: a marker's code must be a whole number from 1 to 255"},
        {"[markers]\n0x3 = a\n", "2: a marker's code must be a whole number from 1 to 255"},
        {"[markers]\n3 = a b\n", "2: a marker's name may hold letters, digits"},
        {"[markers]\n3 = a\n3 = a\n", "3: marker 3 is given twice"},
        {"[markers]\n3 = a\n[markers]\n", "3: section [markers] is given twice"},
        {head + "time = 1 s\n[markers]\n1 = a\n2 = f\n",
         "9: marker 2 names 'f', which is neither a mode nor a function in [code]"},
        {"[markers]\n2 = a\n[target]\ntrigger_input = D1\nname = t\nsupply = 1 V\n[mode a]\n"
         "current = 1 A\ntime = 1 s\n",
         "2: marker 2 sets D1, which is the trigger input"}};
    for (const auto& [content, message] : cases) {
        scratch_dir dir;
        const std::string input = dir.write("t.tgcfg", content);
        const std::string output = dir.write("ws_board.dat", "older\n");
        std::ostringstream errors;
        EXPECT_EQ(standin::convert_target_file(input, output, errors), 1);
        EXPECT_EQ(errors.str().rfind("tgcfgsetup: " + input + ":" + message, 0), 0u)
            << errors.str();
        EXPECT_EQ(read_file(output), "older\n");
        EXPECT_EQ(dir.count(), 2);
    }
}

}  // namespace
