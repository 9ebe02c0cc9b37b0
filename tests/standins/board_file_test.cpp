#include "common/board_file.h"

#include <gtest/gtest.h>

#include "common/text_input.h"
#include "scratch_dir.h"

namespace {

using standin::parse_board;

TEST(board_file, finds_functions_defined_below_and_renders_what_reads_back_the_same) {
    const standin::board_model board = parse_board(standin_test::plain_board, "plain.dat");
    EXPECT_EQ(board.modes.at(1).code.at(1).region, 2u);
    for (const char* extra :
         {"", "powered_by probe\ntrigger_input D0\nmarker 2 work\nmarker 254 idle\n"}) {
        const std::string text = standin::render_board(
            parse_board(standin_test::plain_board + std::string(extra), "p"), "plain.tgcfg");
        EXPECT_EQ(standin::render_board(parse_board(text, "again.dat"), "plain.tgcfg"), text);
        EXPECT_EQ(text.find("powered_by probe\ntrigger_input D0\n") != std::string::npos,
                  *extra != 0);
    }
}

TEST(board_file, malformed_files_are_refused_with_file_and_line) {
    const std::string head = "board 1\ntarget t\nsupply_uv 3300000\n";
    // 2^32 + 10000 in shares: the sum must not wrap to exactly 10000.
    std::string wrapping = head + "function f 0 1\nmode a 1 1";
    for (int i = 0; i < 429497; ++i) {
        wrapping += " f:10000";
    }
    const std::pair<std::string, std::string> cases[] = {
        {"", "1: expected 'board 1' as the first line"},
        {"# c\r\n\n\tboard 1 # v\r\n  colour red\n", "4: unknown keyword 'colour'"},
        {"board 1\nsupply_uv 3.3\n", "2: supply_uv must be a whole number from 1 to 100000000"},
        {head + "mode a 1\n", "4: expected 'mode <name> <nanoamperes> <microseconds>"},
        {head + "mode a 1 1 f:9000\nfunction f 0 2\n", "4: the shares of mode 'a' add up to 9000"},
        {wrapping + " f:7296\n", "5: the shares of mode 'a' add up to 4294977296, not 10000"},
        {head + "mode a 1 1 f:10000\n", "4: function 'f' is not defined"},
        {head + "function f 0 1\nfunction f 2 3\n", "5: function 'f' is given twice"},
        {head + "function f 0x10 0x10\n", "4: expected a start and a larger end address"},
        {head + "powered_by usb\n", "4: expected 'powered_by probe' or 'powered_by external'"},
        {head + "trigger_input 3\n", "4: expected 'trigger_input D<n>' with n from 0 to 7"},
        {head + "trigger_input D8\n", "4: expected 'trigger_input D<n>' with n from 0 to 7"},
        {"board 1\ntarget t\npowered_by probe\nsupply_uv 700000\nmode a 1 1\n",
         "3: powered_by probe needs a supply_uv from 800000 to 5000000"},
        {head + "powered_by probe\nmode a 1 1\npowered_by external\n",
         "6: powered_by is given twice"},
        {head + "marker 0 a\n", "4: a marker's code must be a whole number from 1 to 255"},
        {head + "mode a 1 1\nmarker 3 a\nmarker 3 a\n", "6: marker 3 is given twice"},
        {head + "marker 3 radio\nmode a 1 1\n",
         "4: marker 3 names 'radio', which is neither a function nor a mode of the board"},
        {head + "trigger_input D1\nmarker 3 a\nmode a 1 1\n",
         "5: marker 3 sets D1, which is the trigger input"}};
    for (const auto& [content, message] : cases) {
        try {
            parse_board(content, "b.dat");
            ADD_FAILURE() << "accepted: " << message;
        } catch (const standin::input_error& e) {
            EXPECT_EQ(std::string(e.what()).rfind("b.dat:" + message, 0), 0u) << e.what();
        }
    }
}

}  // namespace
