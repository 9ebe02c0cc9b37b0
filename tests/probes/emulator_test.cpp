// The PPK2 emulator's device side: what it sends must decode to the model's
// current, its commands parse however the bytes are split, and each fault
// does exactly what it says.

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "emulator_calibration.h"
#include "emulator_commands.h"
#include "emulator_device.h"
#include "emulator_figures.h"
#include "emulator_options.h"

namespace {

using namespace ppk2_emulator;

TEST(emulator, word_layout) {
    struct row {
        uint32_t adc;
        int range;
        uint32_t counter;
        uint8_t logic;
        uint32_t word;
    };
    for (const row& r : std::vector<row>{
             {0x3FFF, 0, 0, 0, 0x00003FFF},
             {0, 4, 0, 0, 0x00010000},
             {0, 0, 63, 0, 0x00FC0000},
             {0, 0, 64, 0, 0x00000000},  // The counter wraps.
             {0, 0, 0, 0xA5, 0xA5000000},
             {0x1234, 3, 65, 0x01, 0x0104D234},
         }) {
        EXPECT_EQ(make_word(r.adc, r.range, r.counter, r.logic), r.word) << r.adc << " " << r.range;
    }
}

// Each range's whole span, with both calibrations and at two regulator
// voltages: the current decoded from the encoded value is within one ADC step.
TEST(emulator, encoding_round_trips_within_one_step) {
    for (const calibration& cal : {calibration::typical(), calibration::defaults()}) {
        for (const double volts : {0.8, 3.3, 5.0}) {
            for (int range = 0; range < range_count; ++range) {
                const double low = range == 0 ? 0.0 : range_limits[range - 1];
                const double high = range == 4 ? 5.0 : range_limits[range];
                for (int k = 0; k <= 200; ++k) {
                    const double amperes = low + (high - low) * k / 200;
                    const uint32_t adc = encode_current(cal, range, amperes, volts);
                    ASSERT_LT(adc, adc_max) << range << " " << amperes;
                    const double step = decode_current(cal, range, adc + 1, volts) -
                                        decode_current(cal, range, adc, volts);
                    if (adc == 0) {
                        continue;  // Clamped: below the range's offset.
                    }
                    EXPECT_LE(std::fabs(decode_current(cal, range, adc, volts) - amperes),
                              step / 2 * 1.0001)
                        << "range " << range << " at " << amperes << " A, " << volts << " V";
                }
            }
        }
    }
    // Auto-ranging picks the lowest range the current stays under.
    for (const auto& [amperes, range] : std::vector<std::pair<double, int>>{
             {0, 0}, {399e-6, 0}, {400e-6, 1}, {39e-3, 2}, {0.399, 3}, {0.4, 4}, {20, 4}}) {
        EXPECT_EQ(range_for(amperes), range) << amperes;
    }
}

TEST(emulator, commands_parse_however_the_bytes_are_split) {
    const std::vector<uint8_t> bytes{0x11, 0x02, 0x0D, 0x0C, 0xE4, 0x99,
                                     0x0C, 0x01, 0x06, 0x07, 0x19};
    const std::vector<std::string> expected{"mode 2", "regulator 3300", "unknown 0x99", "power 1",
                                            "start",  "stop",           "metadata"};
    for (size_t cut = 0; cut <= bytes.size(); ++cut) {
        command_parser parser;
        std::vector<std::string> seen;
        for (const auto& part : {std::span(bytes).first(cut), std::span(bytes).subspan(cut)}) {
            for (const command& c : parser.feed(part)) {
                seen.push_back(describe(c));
            }
        }
        EXPECT_EQ(seen, expected) << "cut at " << cut;
    }
}

TEST(emulator, smoothing_after_a_range_change) {
    struct row {
        const char* name;
        std::vector<int> ranges;
        std::vector<double> expected;  // Input is 1 A, then 10 A from the change on.
    };
    for (const row& r : std::vector<row>{
             // The change and the two after it read the 0.18 average.
             {"to range 2", {1, 1, 2, 2, 2, 2}, {1, 1, 2.62, 3.9484, 5.037688, 10}},
             // Range 4 reads the 0.06 average, which ignores its first two samples.
             {"to range 4", {3, 3, 4, 4, 4, 4}, {1, 1, 1, 1, 1.54, 10}},
         }) {
        range_smoothing smoothing;
        for (size_t k = 0; k < r.ranges.size(); ++k) {
            const double amperes = r.ranges[k] == r.ranges[0] ? 1.0 : 10.0;
            EXPECT_NEAR(smoothing.next(r.ranges[k], amperes), r.expected[k], 1e-9)
                << r.name << " sample " << k;
        }
    }
}

// A board drawing a constant 1 mA from a 3.3 V supply.
standin::board_model constant_board() {
    standin::board_model board;
    board.supply_uv = 3'300'000;
    board.modes.push_back({"run", 1'000'000, 1000, {}});
    return board;
}

struct stream_result {
    std::vector<uint32_t> words;
    size_t bytes = 0;
};

stream_result take(device& dev) {
    stream_result r;
    const std::string_view bytes = dev.pending();
    r.bytes = bytes.size();
    for (size_t k = 0; k + 4 <= bytes.size(); k += 4) {
        uint32_t w = 0;
        for (size_t b = 0; b < 4; ++b) {
            w |= static_cast<uint32_t>(static_cast<uint8_t>(bytes[k + b])) << (8 * b);
        }
        r.words.push_back(w);
    }
    dev.consume(bytes.size());
    return r;
}

void send(device& dev, std::vector<uint8_t> bytes) {
    dev.receive(bytes);
}

TEST(emulator, faults_do_what_they_say) {
    const standin::board_model board = constant_board();
    {
        // 70 samples lost at 1 ms: the counter jumps by 71 (mod 64), once.
        options opts;
        opts.lose.push_back({70, 1});
        device dev(opts, board);
        send(dev, {0x06});
        dev.produce_until(300);
        const stream_result r = take(dev);
        ASSERT_EQ(r.words.size(), 230u);
        EXPECT_EQ(r.words[99] >> 18 & 63, 35u);
        EXPECT_EQ(r.words[100] >> 18 & 63, (35 + 71) % 64u);
        EXPECT_EQ(dev.figures().lost, 70u);
        EXPECT_EQ(dev.position(), 300u);
    }
    {
        // A slip sends one byte less, once; the slipped word stays out of the sums.
        options opts;
        opts.slip_at_ms = {1};
        device dev(opts, board);
        send(dev, {0x06});
        dev.produce_until(300);
        EXPECT_EQ(take(dev).bytes, 300 * 4 - 1u);
        EXPECT_EQ(dev.figures().slipped, 1u);
        EXPECT_EQ(dev.figures().decoded, 299u);
    }
    {
        // A stall stops the samples where it begins; they follow when asked again.
        options opts;
        opts.stall.push_back({25, 2});
        device dev(opts, board);
        send(dev, {0x06});
        EXPECT_EQ(dev.produce_until(1000), std::optional<int64_t>(25));
        EXPECT_EQ(dev.position(), 200u);
        EXPECT_EQ(dev.produce_until(1000), std::nullopt);
        EXPECT_EQ(take(dev).words.size(), 1000u);
    }
    {
        // Stale bytes come before the first metadata reply only.
        options opts;
        opts.stale_bytes = 10;
        device dev(opts, board);
        send(dev, {0x19});
        const std::string first(dev.pending());
        dev.consume(first.size());
        send(dev, {0x19});
        const std::string second(dev.pending());
        EXPECT_EQ(first.substr(10), second);
        EXPECT_TRUE(second.starts_with("Calibrated: 1\n") && second.ends_with("END\n"));
    }
}

// The stream carries the board's current in ampere mode, and in source mode
// only while the target is powered; the figures agree with the model.
TEST(emulator, stream_follows_mode_and_power) {
    const standin::board_model board = constant_board();
    options opts;
    device dev(opts, board);
    std::vector<std::string> log;
    dev.on_command = [&](const std::string& line) { log.push_back(line); };
    send(dev, {0x06});
    dev.produce_until(1000);
    EXPECT_NEAR(dev.figures().sum_a / 1000, 1e-3, 1e-6);
    EXPECT_DOUBLE_EQ(dev.figures().volts, 3.3);  // The board's supply in ampere mode.
    send(dev, {0x07, 0x11, 0x02, 0x0D, 0x07, 0xD0, 0x06});
    EXPECT_DOUBLE_EQ(dev.figures().volts, 2.0);  // The regulator in source mode.
    dev.produce_until(1000);
    EXPECT_NEAR(dev.figures().sum_a / 1000, 0.0, 1e-6);  // Not powered.
    send(dev, {0x0C, 0x01});
    dev.produce_until(2000);
    // Less the smoothing of the power-on's range change: about two samples.
    EXPECT_NEAR(dev.figures().sum_a / 1000, 1e-3 - 2e-6, 0.2e-6);
    send(dev, {0x20});
    EXPECT_FALSE(dev.streaming());
    EXPECT_EQ(log, (std::vector<std::string>{"start", "stop", "mode 2", "regulator 2000", "start",
                                             "power 1", "reset"}));
    EXPECT_NE(render_report(dev.figures(), dev.streams()).find("streams 2\n"), std::string::npos);
}

// The schedule repeats from the stream's start; the rise holds its input
// low before and high after, whatever the schedule says.
TEST(emulator, logic_inputs_follow_the_schedule_and_the_rise) {
    const standin::board_model board = constant_board();
    const options opts =
        parse_options({"--board", "b", "--logic", "0x81:20,2:30", "--rise", "D7@1"});
    device dev(opts, board);
    send(dev, {0x06});
    dev.produce_until(103);
    const std::vector<uint32_t> words = take(dev).words;
    std::vector<uint32_t> logic;
    for (const size_t k : {0, 1, 2, 4, 5, 99, 100, 102}) {
        logic.push_back(words[k] >> 24);
    }
    EXPECT_EQ(logic, (std::vector<uint32_t>{0x01, 0x01, 0x02, 0x02, 0x01, 0x02, 0x81, 0x82}));
}

TEST(emulator, uncalibrated_metadata_and_bad_options) {
    const std::string text = metadata_text(calibration::defaults(), 3700, 1);
    for (const char* line : {"Calibrated: 0\n", "R0: 0\n", "GS2: -nan\n", "UG4: -nan\n"}) {
        EXPECT_NE(text.find(line), std::string::npos) << line;
    }
    for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
             {},
             {"--board", "b", "--lose", "5"},
             {"--board", "b", "--logic", "1:0"},
             {"--board", "b", "--logic", "256:10"},
             {"--board", "b", "--rise", "D8@5"},
             {"--board", "b", "--slip", "-1"},
             {"--board"},
             {"--board", "b", "extra"},
         }) {
        EXPECT_THROW(parse_options(args), usage_error) << ::testing::PrintToString(args);
    }
    const options o = parse_options({"--board", "b", "--logic", "0x80:10,0:30", "--rise", "D3@5"});
    EXPECT_EQ(o.logic.size(), 2u);
    EXPECT_EQ(o.logic[0].inputs, 0x80);
    EXPECT_EQ(o.rise_input, 3);
}

}  // namespace
