// The PPK2's commands, words, calibration and metadata, row by row.

#include <gtest/gtest.h>

#include "ppk2/metadata.h"
#include "ppk2/word.h"

namespace {

using namespace probes::ppk2;

TEST(ppk2_decode, word_fields) {
    // Words of every field are decoded end to end; these are the edges.
    const std::pair<uint32_t, std::array<int, 4>> rows[] = {
        // word: adc, range, counter, logic
        {0x00020000, {0, 0, 0, 0}},  // bit 17 belongs to nothing
        {0x0001c000, {0, 4, 0, 0}},  // range 7 reads as the top range
        {0x00f00000 | 3u << 14, {0, 3, 0x3c, 0}},
    };
    for (const auto& [word, fields] : rows) {
        const word_fields f = split_word(word);
        EXPECT_EQ((std::array<int, 4>{f.adc, f.range, f.counter, f.logic}), fields) << word;
    }
}

// Worked out by hand from
// x = (4 ADC - O) * 1.8 / 163840 / R;  I = UG (x (GS x + GI) + S V + I).
TEST(ppk2_decode, current_of_each_range) {
    calibration tuned;
    tuned.o[1] = 40, tuned.gs[1] = 0.5, tuned.gi[1] = 0.9, tuned.s[1] = 0.002;
    tuned.i[1] = 1e-6, tuned.ug[1] = 1.1;
    const calibration defaults;
    const struct {
        const calibration& cal;
        double volts;
        uint8_t range;
        uint16_t adc;
        double amperes;
    } rows[] = {
        // x = 4000 * 1.0986328e-5 / 1031.64 = 4.2598e-5; I = x + x^2
        {defaults, 0, 0, 1000, 4.259934130280418e-05},
        {defaults, 0, 1, 8191, 3.553671485931279e-03},   // x = 3.54105e-3
        {defaults, 0, 2, 16383, 7.596292728053886e-02},  // x = 7.09325e-2
        {defaults, 0, 4, 100, 0.11264291436302142},      // x = 0.102199
        // x = 7960 * 1.0986328e-5 / 101.65 = 8.60334e-4;
        // I = 1.1 (x (0.5 x + 0.9) + 0.002 * 3.3 + 1e-6)
        {tuned, 3.3, 1, 2000, 8.113220411052082e-03},
    };
    for (const auto& row : rows) {
        EXPECT_NEAR(converter(row.cal, row.volts).amperes(row.range, row.adc), row.amperes,
                    row.amperes * 1e-9)
            << "range " << int(row.range);
    }
}

TEST(ppk2_decode, metadata) {
    const metadata_reply m = parse_metadata(
        "Calibrated: 1\nR0: 1003.35\nR4: 0.0564\nGS1: 0.0013\nGI1: 0.9924\nO2: 52.25\n"
        "S3: -2e-7\nI4: 3e-5\nUG0: 1.01\nVDD: 3300\nHW: 9173\nmode: 2\nIA: 56\nnew: x\nEND\n");
    ASSERT_EQ(m.state, reply_state::complete);
    const calibration& c = m.data.cal;
    EXPECT_EQ((std::array{c.r[0], c.r[1], c.r[4], c.gs[0], c.gs[1], c.gi[1], c.o[2], c.s[3], c.i[4],
                          c.ug[0]}),
              (std::array{1003.35, 101.65, 0.0564, 1.0, 0.0013, 0.9924, 52.25, -2e-7, 3e-5, 1.01}));
    EXPECT_TRUE(m.data.calibrated);
    EXPECT_EQ(m.data.vdd_mv, 3300);
    EXPECT_EQ(m.data.hw + m.data.mode + m.data.ia, "9173256");

    // Uncalibrated: "-nan" and a shunt of 0 keep the defaults; CRLF lines.
    const metadata_reply u =
        parse_metadata("Calibrated: 0\r\nR0: -nan\r\nR4: 0\r\nGS2: nan\r\nO1: inf\r\nEND\r\n");
    ASSERT_EQ(u.state, reply_state::complete);
    const calibration defaults;
    EXPECT_EQ(u.data.cal.r, defaults.r);
    EXPECT_EQ(u.data.cal.gs, defaults.gs);
    EXPECT_EQ(u.data.cal.o, defaults.o);

    const std::pair<std::string, reply_state> rows[] = {
        {"R0: 1003.3\nEN", reply_state::incomplete},
        {"\nR0: 1\n\nEND\n", reply_state::complete},
        // Stale sample words before the reply.
        {std::string("\x12\x80\x44\x00R0: 1\nEND\n", 14), reply_state::garbled},
        {"no colon here\nEND\n", reply_state::garbled},
        {"R 0: 1\nEND\n", reply_state::garbled},
        {std::string(5000, 'A'), reply_state::garbled},
    };
    for (const auto& [bytes, state] : rows) {
        EXPECT_EQ(parse_metadata(bytes).state, state) << bytes;
    }
}

}  // namespace
