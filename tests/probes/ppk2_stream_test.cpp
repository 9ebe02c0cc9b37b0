// The PPK2's byte stream to samples (framing, losses, slips, range-switch
// smoothing) and samples to rows.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>

#include "ppk2/averager.h"

namespace {

using namespace probes::ppk2;
using bytes = std::vector<uint8_t>;

void put(bytes& b, uint16_t adc, uint8_t range, int counter, uint8_t logic = 0x5a) {
    const uint32_t w =
        adc | uint32_t{range} << 14 | uint32_t(counter & 63) << 18 | uint32_t{logic} << 24;
    b.insert(b.end(), {uint8_t(w), uint8_t(w >> 8), uint8_t(w >> 16), uint8_t(w >> 24)});
}

// `count` words counting from `first`, ADC 10 + i.
bytes stream(int count, int first) {
    bytes b;
    for (int i = 0; i < count; ++i) {
        put(b, uint16_t(10 + i), 0, first + i);
    }
    return b;
}

// A calibration under which a sample's current is its ADC value.
converter identity() {
    calibration cal;
    cal.r.fill(4 * 1.8 / 163840), cal.gs.fill(0);
    return converter(cal, 0);
}

std::vector<device_sample> decode(const std::vector<bytes>& chunks, decoder_totals* t = nullptr) {
    stream_decoder d(identity());
    std::vector<device_sample> out;
    for (const auto& c : chunks) {
        d.feed(c, out);
    }
    if (t) {
        *t = d.totals();
    }
    return out;
}

// Reads cut words anywhere; end to end, only a slip moves the cuts.
TEST(ppk2_stream, any_cut_gives_the_same_samples) {
    const bytes b = stream(40, 50);  // the counter wraps at 64
    for (size_t cut = 0; cut <= b.size(); ++cut) {
        const auto parts = decode({{b.begin(), b.begin() + cut}, {b.begin() + cut, b.end()}});
        ASSERT_EQ(parts.size(), 40u) << "cut at " << cut;
        const size_t at = std::min<size_t>(cut / 4, 39);  // The word the cut split.
        EXPECT_EQ(parts[at].current, 10.0 + double(at)) << "cut at " << cut;
    }
}

// A loss and a slip are counted end to end; these damages are not.
TEST(ppk2_stream, losses_and_slips_are_counted_exactly) {
    const struct {
        const char* name;
        std::function<void(bytes&)> damage;
        size_t samples;
        uint64_t lost, discarded, resyncs;
        size_t at;  // A sample that carries a loss, and how much.
        uint32_t lost_at;
    } rows[] = {
        {"a byte too many", [](bytes& b) { b.insert(b.begin() + 80, 0x77); }, 40, 0, 1, 1, 20, 0},
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
        EXPECT_EQ((std::array{t.lost, t.discarded_bytes, t.resyncs}),
                  (std::array{row.lost, row.discarded, row.resyncs}))
            << row.name;
        uint64_t carried = 0;
        for (const auto& s : out) {
            carried += s.lost_before;
        }
        EXPECT_EQ(out[row.at].lost_before, row.lost_at) << row.name;
        EXPECT_EQ(carried, row.lost) << row.name;
    }
}

// Worked out by hand: the top range's 0.06 average of the values before
// (the lower ranges' 0.18 is compared with the emulator's end to end). Its
// full scale is clipped, in range 4 and in the codes above it.
TEST(ppk2_stream, range_switches_and_clipping) {
    const struct {
        uint8_t to_range;
        uint16_t adc;
        std::vector<double> currents;
    } rows[] = {
        // The averages from before hold for 2 samples; then 0.06 * 1000 + 0.94 * 100.
        {4, 1000, {100, 100, 100, 100, 154, 1000}},
        {3, 0x3fff, {}},
        {4, 0x3fff, {}},
        {7, 0x3fff, {}},
    };
    for (const auto& row : rows) {
        bytes b;
        for (int i = 0; i < 6; ++i) {
            i < 2 ? put(b, 100, 0, i) : put(b, row.adc, row.to_range, i);
        }
        const auto out = decode({b});
        ASSERT_EQ(out.size(), 6u);
        for (size_t i = 0; i < row.currents.size(); ++i) {
            EXPECT_NEAR(out[i].current, row.currents[i], 1e-9) << int(row.to_range) << " #" << i;
        }
        EXPECT_EQ(out[5].clipped, row.adc == 0x3fff && row.to_range >= 4) << int(row.to_range);
    }
}

// Device indices 0 to `end` - 1, each sample's current its index; `lost`
// maps an index to how many samples from it on were lost.
std::vector<period> average(int32_t rate, uint64_t end, std::map<uint64_t, uint32_t> lost = {},
                            bytes logic = {}, std::optional<int> trigger = {},
                            std::vector<logic_share>* shares = nullptr) {
    std::vector<device_sample> samples;
    for (uint64_t i = 0; i < end; ++i) {
        const uint32_t gap = lost.count(i) ? lost[i] : 0;
        i += gap;
        samples.push_back({double(i), gap, 0, i < logic.size() ? logic[i] : uint8_t{0}, i == 7});
    }
    averager a(rate, trigger);
    std::vector<period> out;
    std::vector<logic_share> split;
    a.add(samples, out, shares ? *shares : split);
    return out;
}

TEST(ppk2_averager, periods) {
    using figures = std::array<double, 6>;  // index, samples, lost, mean, min, max
    const struct {
        const char* name;
        int32_t rate;
        uint64_t end;
        std::map<uint64_t, uint32_t> lost;
        std::vector<figures> periods;
    } rows[] = {
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
        std::vector<figures> got;
        for (const period& p : average(row.rate, row.end, row.lost)) {
            got.push_back(
                {double(p.index), double(p.samples), double(p.lost), p.mean, p.min, p.max});
        }
        EXPECT_EQ(got, row.periods) << row.name;
    }
}

TEST(ppk2_averager, logic_clipping_and_trigger) {
    // Periods of 4: D0 high in 2 (a tie reads high), D1 in 1; then D2 in 2. Sample 7 is clipped.
    // By logic byte, each period splits into its samples' codes, in order of appearance.
    std::vector<logic_share> shares;
    const auto out = average(25000, 8, {}, {1, 1, 2, 0, 4, 4, 0, 0}, {}, &shares);
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ((std::array{out[0].logic, out[1].logic}), (std::array<uint8_t, 2>{0x01, 0x04}));
    EXPECT_EQ((std::array{out[0].shares, out[1].shares}), (std::array<uint32_t, 2>{3, 2}));
    std::vector<std::array<double, 3>> split;
    for (const logic_share& share : shares) {
        split.push_back({double(share.logic), double(share.samples), share.sum});
    }
    EXPECT_EQ(split, (std::vector<std::array<double, 3>>{
                         {1, 2, 1}, {2, 1, 2}, {0, 1, 3}, {4, 2, 9}, {0, 2, 13}}));
    EXPECT_EQ((std::array{out[0].clipped, out[1].clipped}), (std::array{false, true}));

    // D3 high from the start is no edge; the rise at sample 5 starts period 0.
    const auto triggered = average(100000, 8, {}, {8, 8, 0, 0, 0, 8, 8, 0}, 3);
    ASSERT_EQ(triggered.size(), 3u);
    EXPECT_EQ(triggered[0].index, 0u);
    EXPECT_EQ(triggered[0].mean, 5);
}

}  // namespace
