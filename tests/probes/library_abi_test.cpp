// The simulator as zelno meets it: loaded, run, watched and stopped across threads.

#include <gtest/gtest.h>

#include <thread>

#include "scratch_dir.h"
#include "usecases/usecase_abi.h"
#include "utilities/udll.h"

namespace {

// Its progress grows while it runs: samples in the file, their mean, energy.
TEST(simulator_library, a_capture_runs_on_one_thread_and_reports_progress_to_another) {
    VX_UTL::uDll library(nullptr, 0);
    ASSERT_TRUE(library.load_file(ZELNO_SIMULATOR_FILE)) << library.last_error();
    ASSERT_NE(library.get_symbol("prodtest_progress"), nullptr);
    auto find = [&](const char* name) { return library.get_symbol(name); };
    standin_test::scratch_dir dir;
    void* handle = nullptr;
    {
        // The record dies before the run, as zelno's does.
        wattscope_options o{};
        o.sampfreq = 2000, o.maxoutsize = 1024, o.output = dir.file("capture.csv");
        o.format = "csv", o.trace_mode = "ws+", o.device = "unused", o.range = "lo";
        o.config = dir.write("plain.dat", standin_test::plain_board);
        reinterpret_cast<wattscope_create_fn>(find("wattscope_create"))(&o, &handle);
    }
    ASSERT_NE(handle, nullptr);
    int32_t result = 0;
    testing::internal::CaptureStdout();  // The summary: e2e/demo checks it.
    std::thread runner(
        [&] { result = reinterpret_cast<wattscope_run_fn>(find("wattscope_run"))(handle); });
    auto progress = reinterpret_cast<usecase_progress_fn>(find("wattscope_progress"));
    usecase_progress seen[2] = {{sizeof(usecase_progress), 0, 0, 0, 0}};
    for (usecase_progress& p : seen) {
        const uint64_t before = seen[0].samples;
        for (int i = 0; i < 1000 && p.samples <= before; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            p.size = sizeof(usecase_progress);
            ASSERT_EQ(progress(handle, &p), 0);
        }
    }
    reinterpret_cast<wattscope_stop_fn>(find("wattscope_stop"))(handle);
    runner.join();
    reinterpret_cast<wattscope_destroy_fn>(find("wattscope_destroy"))(handle);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(result, 1);
    EXPECT_TRUE(seen[0].samples > 0 && seen[1].samples > seen[0].samples);
    EXPECT_EQ(seen[1].fields, 7u);
    EXPECT_NEAR(seen[1].mean_current_a, 280e-6, 20e-6);  // The plain board's mean.
    EXPECT_GT(seen[1].energy_j, 0.0);
}

}  // namespace
