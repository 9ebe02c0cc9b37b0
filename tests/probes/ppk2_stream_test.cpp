// The PPK2's byte stream to samples (framing, losses, slips, range-switch
// smoothing) and samples to rows.

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <numeric>

#include "ppk2/averager.h"
#include "ppk2/stream_decoder.h"

namespace {

using namespace probes::ppk2;

uint32_t word(uint16_t adc, uint8_t range, uint8_t counter, uint8_t logic = 0x5a) {
    return adc | uint32_t{range} << 14 | uint32_t{counter & 63u} << 18 | uint32_t{logic} << 24;
}

// A calibration under which a sample's current is its ADC value.
converter identity() {
    calibration cal;
    for (int r = 0; r < range_count; ++r) {
        cal.r[r] = 4 * 1.8 / 163840, cal.gs[r] = 0;
    }
    return converter(cal, 0);
}

// `count` words counting from `first`, ADC 10 + i, as bytes.
std::vector<uint8_t> stream(int count, int first = 0) {
    std::vector<uint8_t> bytes;
    for (int i = 0; i < count; ++i) {
        const uint32_t w = word(static_cast<uint16_t>(10 + i), 0, static_cast<uint8_t>(first + i));
        for (int b = 0; b < 4; ++b) {
            bytes.push_back(static_cast<uint8_t>(w >> (8 * b)));
        }
    }
    return bytes;
}

std::vector<device_sample> decode(const std::vector<std::vector<uint8_t>>& chunks,
                                  decoder_totals* totals = nullptr) {
    stream_decoder d(identity());
    std::vector<device_sample> out;
    for (const auto& c : chunks) {
        d.feed(c, out);
    }
    if (totals) {
        *totals = d.totals();
    }
    return out;
}

TEST(ppk2_stream, any_chunking_gives_the_same_samples) {
    const std::vector<uint8_t> bytes = stream(40, 50);  // the counter wraps at 64
    const std::vector<device_sample> whole = decode({bytes});
    ASSERT_EQ(whole.size(), 40u);
    for (size_t i = 0; i < whole.size(); ++i) {
        EXPECT_DOUBLE_EQ(whole[i].current, 10.0 + i);
        EXPECT_EQ(whole[i].lost_before, 0u);
        EXPECT_EQ(whole[i].logic, 0x5a);
    }
    for (size_t cut = 0; cut <= bytes.size(); ++cut) {
        const auto parts =
            decode({{bytes.begin(), bytes.begin() + cut}, {bytes.begin() + cut, bytes.end()}});
        ASSERT_EQ(parts.size(), whole.size()) << "cut at " << cut;
        EXPECT_EQ(parts.back().current, whole.back().current) << "cut at " << cut;
    }
    std::vector<std::vector<uint8_t>> bytewise;
    for (uint8_t b : bytes) {
        bytewise.push_back({b});
    }
    EXPECT_EQ(decode(bytewise).size(), whole.size());
}

TEST(ppk2_stream, losses_and_slips_are_counted_exactly) {
    using bytes = std::vector<uint8_t>;
    const struct {
        const char* name;
        std::function<void(bytes&)> damage;
        size_t samples;
        uint64_t lost, discarded, resyncs;
        size_t at;  // Index of the sample that carries the loss.
        uint32_t lost_before;
    } rows[] = {
        {"clean", [](bytes&) {}, 40, 0, 0, 0, 0, 0},
        {"5 words lost", [](bytes& b) { b.erase(b.begin() + 80, b.begin() + 100); }, 35, 5, 0, 0,
         20, 5},
        {"two runs of gaps",
         [](bytes& b) {
             b.erase(b.begin() + 80, b.begin() + 92);
             b.erase(b.begin() + 40, b.begin() + 48);
         },
         35, 5, 0, 0, 10, 2},
        {"a byte slipped", [](bytes& b) { b.erase(b.begin() + 81); }, 39, 1, 3, 1, 20, 1},
        {"a byte too many", [](bytes& b) { b.insert(b.begin() + 80, 0x77); }, 40, 0, 1, 1, 0, 0},
        {"a counter hit", [](bytes& b) { b[82] ^= 0x40; }, 39, 1, 4, 1, 20, 1},
        {"stale bytes first",
         [](bytes& b) {
             b.insert(b.begin(), {1, 2, 3});
         },
         40, 0, 3, 0, 0, 0},
    };
    for (const auto& row : rows) {
        bytes b = stream(40, 60);
        row.damage(b);
        decoder_totals t;
        const auto out = decode({b}, &t);
        ASSERT_EQ(out.size(), row.samples) << row.name;
        EXPECT_EQ(t.lost, row.lost) << row.name;
        EXPECT_EQ(t.discarded_bytes, row.discarded) << row.name;
        EXPECT_EQ(t.resyncs, row.resyncs) << row.name;
        EXPECT_EQ(out[row.at].lost_before, row.lost_before) << row.name;
        const uint64_t carried = std::accumulate(
            out.begin(), out.end(), uint64_t{0},
            [](uint64_t sum, const device_sample& s) { return sum + s.lost_before; });
        EXPECT_EQ(carried, row.lost) << row.name;
    }
}

// Worked out by hand: averages 0.18 and 0.06 of the values before.
TEST(ppk2_stream, a_range_switch_is_smoothed) {
    const struct {
        uint8_t to_range;
        std::vector<double> currents;
    } rows[] = {
        // 0.18 * 200 + 0.82 * 100 = 118; then 132.76, 144.8632; then raw.
        {1, {100, 100, 118, 132.76, 144.8632, 200}},
        // The top range keeps the averages from before for 2 samples, then
        // 0.06 * 1000 + 0.94 * 100 = 154.
        {4, {100, 100, 100, 100, 154, 1000}},
    };
    for (const auto& row : rows) {
        const uint16_t adc = row.to_range == 4 ? 1000 : 200;
        std::vector<uint8_t> bytes;
        for (uint8_t i = 0; i < 6; ++i) {
            const uint32_t w = i < 2 ? word(100, 0, i) : word(adc, row.to_range, i);
            bytes.insert(bytes.end(),
                         {uint8_t(w), uint8_t(w >> 8), uint8_t(w >> 16), uint8_t(w >> 24)});
        }
        const auto out = decode({bytes});
        ASSERT_EQ(out.size(), row.currents.size());
        for (size_t i = 0; i < out.size(); ++i) {
            EXPECT_NEAR(out[i].current, row.currents[i], 1e-9)
                << "range " << int(row.to_range) << " #" << i;
        }
    }
}

TEST(ppk2_stream, clipped_only_at_the_top_of_the_top_range) {
    std::vector<uint8_t> bytes;
    const uint32_t words[] = {word(0x3fff, 4, 0), word(0x3ffe, 4, 1), word(0x3fff, 3, 2),
                              word(0x3fff, 7, 3)};
    for (uint32_t w : words) {
        bytes.insert(bytes.end(),
                     {uint8_t(w), uint8_t(w >> 8), uint8_t(w >> 16), uint8_t(w >> 24)});
    }
    const auto out = decode({bytes});
    ASSERT_EQ(out.size(), 4u);
    EXPECT_TRUE(out[0].clipped);
    EXPECT_FALSE(out[1].clipped);
    EXPECT_FALSE(out[2].clipped);
    EXPECT_TRUE(out[3].clipped);
}

// Device indices 0 to `end` - 1, each sample's current its index; `lost`
// maps an index to how many samples from it on were lost.
std::vector<period> average(int32_t rate, uint64_t end, std::map<uint64_t, uint32_t> lost = {},
                            std::vector<uint8_t> logic = {}, std::optional<int> trigger = {}) {
    std::vector<device_sample> samples;
    for (uint64_t i = 0; i < end; ++i) {
        const uint32_t gap = lost.count(i) ? lost[i] : 0;
        i += gap;
        samples.push_back({double(i), gap, 0, i < logic.size() ? logic[i] : uint8_t{0}, i == 7});
    }
    averager a(rate, trigger);
    std::vector<period> out;
    a.add(samples, out);
    return out;
}

TEST(ppk2_averager, periods) {
    struct expected {
        uint64_t index;
        uint32_t samples;
        uint64_t lost;
        double mean, min, max;
    };
    const struct {
        const char* name;
        int32_t rate;
        uint64_t end;
        std::map<uint64_t, uint32_t> lost;
        std::vector<expected> periods;
    } rows[] = {
        {"every sample",
         100000,
         3,
         {},
         {{0, 1, 0, 0, 0, 0}, {1, 1, 0, 1, 1, 1}, {2, 1, 0, 2, 2, 2}}},
        {"1000 a second, the third still open",
         1000,
         250,
         {},
         {{0, 100, 0, 49.5, 0, 99}, {1, 100, 0, 149.5, 100, 199}}},
        {"3 a second",
         3,
         100000,
         {},
         {{0, 33333, 0, 16666, 0, 33332},
          {1, 33333, 0, 49999, 33333, 66665},
          {2, 33334, 0, 83332.5, 66666, 99999}}},
        {"30000 a second: 3, 3, 4",
         30000,
         10,
         {},
         {{0, 3, 0, 1, 0, 2}, {1, 3, 0, 4, 3, 5}, {2, 4, 0, 7.5, 6, 9}}},
        {"some lost",
         1000,
         200,
         {{150, 20}},
         {{0, 100, 0, 49.5, 0, 99}, {1, 80, 20, 147, 100, 199}}},
        {"whole periods lost",
         1000,
         400,
         {{100, 250}},
         {{0, 100, 0, 49.5, 0, 99}, {3, 50, 250, 374.5, 350, 399}}},
    };
    for (const auto& row : rows) {
        const auto out = average(row.rate, row.end, row.lost);
        ASSERT_EQ(out.size(), row.periods.size()) << row.name;
        for (size_t i = 0; i < out.size(); ++i) {
            const expected& e = row.periods[i];
            EXPECT_EQ(out[i].index, e.index) << row.name << " #" << i;
            EXPECT_EQ(out[i].samples, e.samples) << row.name << " #" << i;
            EXPECT_EQ(out[i].lost, e.lost) << row.name << " #" << i;
            EXPECT_DOUBLE_EQ(out[i].mean, e.mean) << row.name << " #" << i;
            EXPECT_EQ(out[i].min, e.min) << row.name << " #" << i;
            EXPECT_EQ(out[i].max, e.max) << row.name << " #" << i;
        }
    }
}

TEST(ppk2_averager, logic_clipping_and_trigger) {
    // Periods of 4: D0 high in 2 (a tie reads high), D1 in 1; then D2 in 2. Sample 7 is clipped.
    const auto out = average(25000, 8, {}, {1, 1, 2, 0, 4, 4, 0, 0});
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(out[0].logic, 0x01);
    EXPECT_EQ(out[1].logic, 0x04);
    EXPECT_FALSE(out[0].clipped);
    EXPECT_TRUE(out[1].clipped);

    // D3 high from the start is no edge; the rise at sample 5 starts period 0.
    const auto triggered = average(100000, 8, {}, {8, 8, 0, 0, 0, 8, 8, 0}, 3);
    ASSERT_EQ(triggered.size(), 3u);
    EXPECT_EQ(triggered[0].index, 0u);
    EXPECT_EQ(triggered[0].mean, 5);
}

}  // namespace
