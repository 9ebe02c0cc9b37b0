// The PPK2 emulator's device side, where zelno's end-to-end test can't see
// it: ranges and a calibration the demo board never reaches, commands split
// anywhere, the faults and inputs that test uses no capture of.

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "emulator_calibration.h"
#include "emulator_commands.h"
#include "emulator_device.h"
#include "emulator_options.h"

namespace {

using namespace ppk2_emulator;

// Each range's whole span, with both calibrations and at three regulator
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

// Range 4 reads the 0.06 average, which ignores its first two samples; the
// lower ranges' 0.18 average is compared with zelno's end to end.
TEST(emulator, smoothing_into_the_top_range) {
    range_smoothing smoothing;
    const std::vector<double> expected{1, 1, 1, 1, 1.54, 10};  // 1 A in range 3, then 10 A.
    for (size_t k = 0; k < expected.size(); ++k) {
        EXPECT_NEAR(smoothing.next(k < 2 ? 3 : 4, k < 2 ? 1.0 : 10.0), expected[k], 1e-9) << k;
    }
}

// A board drawing a constant 1 mA from a 3.3 V supply.
standin::board_model constant_board() {
    standin::board_model board;
    board.supply_uv = 3'300'000;
    board.modes.push_back({"run", 1'000'000, 1000, {}});
    return board;
}

void send(device& dev, std::vector<uint8_t> bytes) {
    dev.receive(bytes);
}

// Losses and slips are counted through zelno end to end; these are not.
TEST(emulator, stall_and_stale_bytes) {
    const standin::board_model board = constant_board();
    {
        // A stall stops the samples where it begins; they follow when asked again.
        options opts;
        opts.stall.push_back({25, 2});
        device dev(opts, board);
        send(dev, {0x06});
        EXPECT_EQ(dev.produce_until(1000), std::optional<int64_t>(25));
        EXPECT_EQ(dev.position(), 200u);
        EXPECT_EQ(dev.produce_until(1000), std::nullopt);
        EXPECT_EQ(dev.pending().size(), 4000u);
        send(dev, {0x07, 0x06});  // Faults fire once: none in the next stream.
        EXPECT_EQ(dev.produce_until(1000), std::nullopt);
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

// The schedule repeats from the stream's start; the rise holds its input
// low before and high after, whatever the schedule says.
TEST(emulator, logic_inputs_follow_the_schedule_and_the_rise) {
    const standin::board_model board = constant_board();
    const options opts =
        parse_options({"--board", "b", "--logic", "0x81:20,2:30", "--rise", "D7@1"});
    device dev(opts, board);
    send(dev, {0x06});
    dev.produce_until(103);
    const std::string_view words = dev.pending();  // Little-endian: logic is each 4th byte.
    std::vector<uint8_t> logic;
    for (const size_t k : {0, 1, 2, 4, 5, 99, 100, 102}) {
        logic.push_back(static_cast<uint8_t>(words[4 * k + 3]));
    }
    EXPECT_EQ(logic, (std::vector<uint8_t>{0x01, 0x01, 0x02, 0x02, 0x01, 0x02, 0x81, 0x82}));
    // The report's per-code figures split the totals by the byte each word carried.
    const stream_figures& f = dev.figures();
    EXPECT_EQ(std::vector<uint64_t>({f.code_samples[1], f.code_samples[2], f.code_samples[0x81],
                                     f.code_samples[0x82]}),
              std::vector<uint64_t>({40, 60, 2, 1}));
    EXPECT_NEAR(f.code_sum_a[1] + f.code_sum_a[2] + f.code_sum_a[0x81] + f.code_sum_a[0x82],
                f.sum_a, 1e-12);
    EXPECT_NE(render_report(f, 1).find("code.129.samples 2\ncode.129.sum_a "), std::string::npos);
}

TEST(emulator, uncalibrated_metadata_and_bad_options) {
    const std::string text = metadata_text(calibration::defaults(), 3700, 1);
    for (const char* line : {"Calibrated: 0\n", "R0: 0\n", "GS2: -nan\n", "UG4: -nan\n"}) {
        EXPECT_NE(text.find(line), std::string::npos) << line;
    }
    // Values that would otherwise wrap or index past the inputs.
    for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
             {"--board", "b", "--lose", "5"},
             {"--board", "b", "--logic", "1:0"},
             {"--board", "b", "--logic", "256:10"},
             {"--board", "b", "--rise", "D8@5"},
             {"--board", "b", "--slip", "-1"},
         }) {
        EXPECT_THROW(parse_options(args), usage_error) << ::testing::PrintToString(args);
    }
}

}  // namespace
