// The PPK2's commands, words, calibration and metadata, row by row.

#include <gtest/gtest.h>

#include <cmath>

#include "ppk2/metadata.h"
#include "ppk2/protocol.h"
#include "ppk2/word.h"

namespace {

using namespace probes::ppk2;

TEST(ppk2_commands, bytes_on_the_wire) {
    const struct {
        command c;
        std::vector<uint8_t> bytes;
    } rows[] = {
        {simple(opcode::get_metadata), {0x19}},
        {simple(opcode::average_start), {0x06}},
        {simple(opcode::average_stop), {0x07}},
        {set_power_mode(power_mode::ampere), {0x11, 1}},
        {set_power_mode(power_mode::source), {0x11, 2}},
        {regulator_set(3300), {0x0d, 0x0c, 0xe4}},  // big-endian millivolts
        {regulator_set(800), {0x0d, 0x03, 0x20}},
        {regulator_set(9000), {0x0d, 0x13, 0x88}},  // clamped to 5000
        {device_running_set(true), {0x0c, 1}},
        {device_running_set(false), {0x0c, 0}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(std::vector<uint8_t>(row.c.bytes.begin(), row.c.bytes.begin() + row.c.size),
                  row.bytes);
    }
}

TEST(ppk2_word, fields) {
    const struct {
        uint32_t word;
        word_fields f;
    } rows[] = {
        {0x00000000, {0, 0, 0, 0}},
        {0x12345678, {0x1678, 1, 0x0d, 0x12}},
        {0x00020000, {0, 0, 0, 0}},  // bit 17 belongs to nothing
        {0xfffc3fff, {0x3fff, 0, 63, 0xff}},
        {0x0001c000, {0, 4, 0, 0}},  // range 7 reads as the top range
        {0x00014001, {1, 4, 0, 0}},  // range 5 too
        {0x00f00000 | 3u << 14, {0, 3, 0x3c, 0}},
    };
    for (const auto& row : rows) {
        const word_fields f = split_word(row.word);
        EXPECT_EQ(f.adc, row.f.adc) << std::hex << row.word;
        EXPECT_EQ(f.range, row.f.range) << std::hex << row.word;
        EXPECT_EQ(f.counter, row.f.counter) << std::hex << row.word;
        EXPECT_EQ(f.logic, row.f.logic) << std::hex << row.word;
    }
    const uint8_t bytes[] = {0x78, 0x56, 0x34, 0x12};
    EXPECT_EQ(load_word(bytes), 0x12345678u);
}

// Expected values worked out by hand from
// x = (4 ADC - O) * 1.8 / 163840 / R;  I = UG (x (GS x + GI) + S V + I).
TEST(ppk2_word, current_of_each_range) {
    calibration tuned;
    tuned.o[1] = 40, tuned.gs[1] = 0.5, tuned.gi[1] = 0.9, tuned.s[1] = 0.002;
    tuned.i[1] = 1e-6, tuned.ug[1] = 1.1;
    const struct {
        const calibration* cal;
        double volts;
        uint8_t range;
        uint16_t adc;
        double amperes;
    } rows[] = {
        // x = 4000 * 1.0986328e-5 / 1031.64 = 4.2598e-5; I = x + x^2
        {nullptr, 0, 0, 1000, 4.259934130280418e-05},
        // x = 32764 * 1.0986328e-5 / 101.65 = 3.54105e-3
        {nullptr, 0, 1, 8191, 3.553671485931279e-03},
        // x = 65532 * 1.0986328e-5 / 10.15 = 7.09325e-2
        {nullptr, 0, 2, 16383, 7.596292728053886e-02},
        {nullptr, 0, 3, 0, 0.0},
        // x = 400 * 1.0986328e-5 / 0.043 = 0.102199
        {nullptr, 0, 4, 100, 0.11264291436302142},
        // x = 7960 * 1.0986328e-5 / 101.65 = 8.60334e-4;
        // I = 1.1 (x (0.5 x + 0.9) + 0.002 * 3.3 + 1e-6)
        {&tuned, 3.3, 1, 2000, 8.113220411052082e-03},
    };
    const calibration defaults;
    for (const auto& row : rows) {
        const converter c(row.cal ? *row.cal : defaults, row.volts);
        EXPECT_NEAR(c.amperes(row.range, row.adc), row.amperes, std::abs(row.amperes) * 1e-9)
            << "range " << int(row.range) << " adc " << row.adc;
    }
}

TEST(ppk2_metadata, replies) {
    const std::string calibrated =
        "Calibrated: 1\nR0: 1003.3506\nR1: 101.5865\nR2: 10.3027\nR3: 0.9636\nR4: 0.0564\n"
        "GS1: 0.0013\nGI1: 0.9924\nO2: 52.25\nS3: -0.0000002\nI4: 0.00003\nUG0: 1.0100\n"
        "VDD: 3300\nHW: 9173\nmode: 2\nIA: 56\nfuture_key: what\nEND\n";
    const metadata_reply m = parse_metadata(calibrated);
    ASSERT_EQ(m.state, reply_state::complete);
    EXPECT_TRUE(m.data.calibrated);
    EXPECT_EQ(m.data.cal.r, (std::array<double, 5>{1003.3506, 101.5865, 10.3027, 0.9636, 0.0564}));
    EXPECT_EQ(m.data.cal.gs[1], 0.0013);
    EXPECT_EQ(m.data.cal.gi[1], 0.9924);
    EXPECT_EQ(m.data.cal.o[2], 52.25);
    EXPECT_EQ(m.data.cal.s[3], -0.0000002);
    EXPECT_EQ(m.data.cal.i[4], 0.00003);
    EXPECT_EQ(m.data.cal.ug[0], 1.01);
    EXPECT_EQ(m.data.cal.gs[0], 1);  // left out: its default
    EXPECT_EQ(m.data.vdd_mv, 3300);
    EXPECT_EQ(m.data.hw, "9173");
    EXPECT_EQ(m.data.mode, "2");
    EXPECT_EQ(m.data.ia, "56");

    // Uncalibrated: "-nan" and a shunt of 0 keep the defaults; CRLF lines.
    const metadata_reply u =
        parse_metadata("Calibrated: 0\r\nR0: -nan\r\nR4: 0\r\nGS2: nan\r\nO1: inf\r\nEND\r\n");
    ASSERT_EQ(u.state, reply_state::complete);
    EXPECT_FALSE(u.data.calibrated);
    const calibration defaults;
    EXPECT_EQ(u.data.cal.r, defaults.r);
    EXPECT_EQ(u.data.cal.gs, defaults.gs);
    EXPECT_EQ(u.data.cal.o, defaults.o);
    EXPECT_FALSE(u.data.vdd_mv);

    const struct {
        std::string bytes;
        reply_state state;
    } rows[] = {
        {"", reply_state::incomplete},
        {"R0: 1003.3", reply_state::incomplete},
        {"R0: 1003.3\nEN", reply_state::incomplete},
        {"END\n", reply_state::complete},
        {"\nR0: 1\n\nEND\n", reply_state::complete},
        // Stale sample words before the reply.
        {std::string("\x12\x80\x44\x00R0: 1\nEND\n", 14), reply_state::garbled},
        {std::string("\x41\x42\x00", 3), reply_state::garbled},
        {"no colon here\nEND\n", reply_state::garbled},
        {": no key\nEND\n", reply_state::garbled},
        {"R 0: 1\nEND\n", reply_state::garbled},
        {std::string(5000, 'A'), reply_state::garbled},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(parse_metadata(row.bytes).state, row.state) << row.bytes;
    }
}

}  // namespace
