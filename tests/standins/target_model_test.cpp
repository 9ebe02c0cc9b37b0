#include "wattscope_sim/target_model.h"

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

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

// Samples are exact means: their sum is the model's charge at any rate, also
// straddling modes (7000/s) or cycles (3/s). Skipping lands where sampling would.
TEST(target_model, samples_sum_to_the_models_charge_at_any_rate) {
    for (const int32_t rate : {1, 3, 7, 300, 7000, 1000000}) {
        target_model model(plain, rate);
        target_model skipped(plain, rate);
        const int64_t samples = std::max<int64_t>(rate, 3);  // At least a second.
        skipped.skip(static_cast<uint64_t>(samples - 1));
        double sum_na = 0;
        target_model::interval last{};
        for (int64_t i = 0; i < samples; ++i) {
            last = model.next();
            sum_na += static_cast<double>(last.mean_na);
        }
        // Each mean is rounded to the nA: at most half a nA per sample off.
        EXPECT_NEAR(sum_na / rate, model_charge_nc(static_cast<double>(samples) / rate),
                    0.5 * samples / rate + 1e-9)
            << rate;
        const target_model::interval landed = skipped.next();
        EXPECT_EQ(std::pair(landed.mean_na, landed.mode), std::pair(last.mean_na, last.mode));
    }
}

// Resolution, clipping, and the voltage drop of the true current through 1 ohm.
TEST(front_end, rounds_clips_and_drops_the_voltage) {
    standin::board_model board = plain;
    board.source_resistance_mohm = 1000;
    standin::sim::front_end low(board, standin::sim::low_range);
    standin::sim::front_end high(board, standin::sim::high_range);
    const std::tuple<standin::sim::front_end*, int64_t, int64_t, bool> cases[] = {
        {&low, 20'000'000, 20'000'000, false},
        {&low, 80'000'000, 50'000'000, true},
        {&high, 80'000'049, 80'000'000, false},
        {&high, 80'000'050, 80'000'100, false}};
    for (const auto& [probe, true_na, current_na, clipped] : cases) {
        const standin::sim::reading r = probe->measure(true_na);
        EXPECT_EQ(std::pair(r.current_na, r.clipped), std::pair(current_na, clipped)) << true_na;
    }
    const standin::sim::reading r = low.measure(20'000'000);
    EXPECT_EQ(std::pair(r.voltage_uv, r.power_nw),
              std::pair(int64_t{1'980'000}, int64_t{39'600'000}));
}

}  // namespace
