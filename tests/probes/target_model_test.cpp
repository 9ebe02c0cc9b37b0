#include "sim/target_model.h"

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

#include "common/board_file.h"
#include "scratch_dir.h"
#include "sim/front_end.h"

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

// Resolution, clipping, and the voltage drop of the true current, down to
// 0 V and no further, at the corners of the board's ranges.
TEST(front_end, rounds_clips_and_drops_the_voltage) {
    using standin::sim::high_range;
    using standin::sim::low_range;
    struct row {
        const standin::sim::probe_range& range;
        int64_t source_mohm, supply_uv, true_na, current_na;
        bool clipped;
        int64_t voltage_uv, power_nw;
    };
    const row rows[] = {
        {low_range, 1000, 2'000'000, 20'000'000, 20'000'000, false, 1'980'000, 39'600'000},
        {low_range, 1000, 2'000'000, 80'000'000, 50'000'000, true, 1'920'000, 96'000'000},
        {high_range, 1000, 2'000'000, 80'000'049, 80'000'000, false, 1'920'000, 153'600'000},
        {high_range, 1000, 2'000'000, 80'000'050, 80'000'100, false, 1'920'000, 153'600'192},
        {low_range, 500'000, 3'300'000, 17'000'000, 17'000'000, false, 0, 0},
        {high_range, standin::max_resistance_mohm, standin::max_supply_uv, standin::max_current_na,
         1'000'000'000, true, 0, 0},
        {high_range, 0, standin::max_supply_uv, standin::max_current_na, 1'000'000'000, true,
         100'000'000, 100'000'000'000}};
    for (const row& r : rows) {
        standin::board_model board = plain;
        board.source_resistance_mohm = r.source_mohm;
        board.supply_uv = r.supply_uv;
        standin::sim::front_end probe(board, r.range);
        const standin::sim::reading got = probe.measure(r.true_na);
        EXPECT_EQ(std::tuple(got.current_na, got.clipped, got.voltage_uv, got.power_nw),
                  std::tuple(r.current_na, r.clipped, r.voltage_uv, r.power_nw))
            << r.true_na << " nA through " << r.source_mohm << " mOhm";
    }
    // The largest noise on the largest current: clipped, never overflowing.
    standin::board_model noisy = plain;
    noisy.noise_ppm = 1'000'000;
    noisy.noise_floor_na = standin::max_current_na;
    noisy.supply_uv = standin::max_supply_uv;
    standin::sim::front_end probe(noisy, high_range);
    for (int i = 0; i < 1000; ++i) {
        EXPECT_LE(std::abs(probe.measure(standin::max_current_na).power_nw), 100'000'000'000);
    }
}

}  // namespace
