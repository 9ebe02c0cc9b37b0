#include "wattscope_sim/target_model.h"

#include <gtest/gtest.h>

#include <cmath>

#include "common/board_file.h"
#include "scratch_dir.h"
#include "wattscope_sim/front_end.h"

namespace {

using standin::sim::target_model;

const standin::board_model plain = standin::parse_board(standin_test::plain_board, "plain.dat");

// The plain board draws 2.8 uC per 10 ms cycle: 1 mA for 2 ms, 0.1 mA for 8 ms.
double model_charge_nc(double seconds) {
    const double cycles = std::floor(seconds / 0.01);
    const double into = seconds - cycles * 0.01;
    return cycles * 2800.0 + std::min(into, 0.002) * 1e6 + std::max(into - 0.002, 0.0) * 1e5;
}

// Each sample is its interval's exact mean, so the sum over samples is the
// model's charge whatever the rate: also when samples straddle mode changes
// (7000/s) or hold many cycles (3/s).
TEST(target_model, samples_sum_to_the_models_charge_at_any_rate) {
    for (const int32_t rate : {1, 3, 7, 300, 7000, 1000000}) {
        target_model model(plain, rate);
        const int64_t samples = std::max<int64_t>(rate, 3);  // At least a second.
        double sum_na = 0;
        for (int64_t i = 0; i < samples; ++i) {
            sum_na += static_cast<double>(model.next().mean_na);
        }
        // Each mean is rounded to the nA: at most half a nA per sample off.
        EXPECT_NEAR(sum_na / rate, model_charge_nc(static_cast<double>(samples) / rate),
                    0.5 * samples / rate + 1e-9)
            << rate;
    }
}

TEST(target_model, reports_the_mode_at_the_middle_of_each_sample) {
    target_model model(plain, 1000);  // 1 ms samples: 2 busy, then 8 idle.
    std::vector<uint32_t> modes;
    for (int i = 0; i < 12; ++i) {
        modes.push_back(model.next().mode);
    }
    EXPECT_EQ(modes, (std::vector<uint32_t>{0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 0, 0}));

    target_model straddling(plain, 200);  // 5 ms: 2 ms busy, 3 ms idle.
    const target_model::interval first = straddling.next();
    EXPECT_EQ(first.mode, 1u);
    EXPECT_EQ(first.mean_na, (1000000 * 2 + 100000 * 3) / 5);
}

TEST(target_model, skipping_lands_where_sampling_would) {
    for (uint64_t count : {1u, 7u, 10u, 12345u}) {
        target_model walked(plain, 3000);
        target_model skipped(plain, 3000);
        for (uint64_t i = 0; i < count; ++i) {
            walked.next();
        }
        skipped.skip(count);
        for (int i = 0; i < 40; ++i) {
            const auto a = walked.next();
            const auto b = skipped.next();
            ASSERT_EQ(a.mean_na, b.mean_na) << count << " " << i;
            ASSERT_EQ(a.mode, b.mode) << count << " " << i;
        }
    }
}

TEST(front_end, clips_at_full_scale_and_rounds_to_the_resolution) {
    standin::board_model board = plain;
    board.source_resistance_mohm = 1000;  // 1 ohm.
    standin::sim::front_end low(board, standin::sim::low_range);
    const auto in_range = low.measure(20'000'000);
    EXPECT_FALSE(in_range.clipped);
    EXPECT_EQ(in_range.current_na, 20'000'000);
    EXPECT_EQ(in_range.voltage_uv, 2'000'000 - 20'000);
    EXPECT_EQ(in_range.power_nw, 20'000'000LL * 1'980'000 / 1'000'000);
    const auto over = low.measure(80'000'000);
    EXPECT_TRUE(over.clipped);
    EXPECT_EQ(over.current_na, standin::sim::low_range.full_scale_na);

    standin::sim::front_end high(board, standin::sim::high_range);
    const auto coarse = high.measure(80'000'049);
    EXPECT_FALSE(coarse.clipped);
    EXPECT_EQ(coarse.current_na, 80'000'000);
    EXPECT_EQ(high.measure(80'000'050).current_na, 80'000'100);
}

}  // namespace
