// The simulator as zelno meets it: loaded by name, its functions found
// by dlsym, the option records passed across, run on one thread and stopped
// from another.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <thread>

#include "scratch_dir.h"
#include "usecases/usecase_abi.h"

namespace {

class simulator_library : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        library_ = dlopen(ZELNO_LIBRARY_DIR "/libwattscopestandalone.so", RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library_, nullptr) << dlerror();
    }

    template <typename F>
    static F find(const char* name) {
        return reinterpret_cast<F>(dlsym(library_, name));
    }

    wattscope_options capture_options(const char* format) const {
        wattscope_options o{};
        o.sampfreq = 2000, o.maxoutsize = 1024, o.output = dir_.file("capture.csv");
        o.format = format, o.trace_mode = "ws+", o.device = "unused", o.range = "lo";
        o.config = dir_.write("plain.dat", standin_test::plain_board);
        return o;
    }

    static void* library_;
    standin_test::scratch_dir dir_;
};

void* simulator_library::library_ = nullptr;

TEST_F(simulator_library, exports_its_functions) {
    for (const char* name :
         {"wattscope_create", "wattscope_run", "wattscope_stop", "wattscope_destroy",
          "wattscope_progress", "prodtest_create", "prodtest_run", "prodtest_stop",
          "prodtest_destroy", "prodtest_progress"}) {
        EXPECT_NE(dlsym(library_, name), nullptr) << name;
    }
}

// Its progress, read from another thread, grows while it runs.
TEST_F(simulator_library, a_capture_runs_on_one_thread_and_stops_from_another) {
    void* handle = nullptr;
    {
        // The record dies before the run, as zelno's does.
        const wattscope_options options = capture_options("csv");
        find<wattscope_create_fn>("wattscope_create")(&options, &handle);
    }
    ASSERT_NE(handle, nullptr);
    int32_t result = 0;
    testing::internal::CaptureStdout();
    std::thread runner([&] { result = find<wattscope_run_fn>("wattscope_run")(handle); });
    auto progress = find<usecase_progress_fn>("wattscope_progress");
    usecase_progress seen[2] = {{sizeof(usecase_progress), 0, 0, 0, 0}};
    for (usecase_progress& p : seen) {
        const uint64_t before = seen[0].samples;
        for (int i = 0; i < 1000 && p.samples <= before; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            p.size = sizeof(usecase_progress);
            ASSERT_EQ(progress(handle, &p), 0);
        }
    }
    find<wattscope_stop_fn>("wattscope_stop")(handle);
    runner.join();
    find<wattscope_stop_fn>("wattscope_stop")(handle);
    find<wattscope_destroy_fn>("wattscope_destroy")(handle);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(result, 1);
    EXPECT_GT(seen[0].samples, 0u);
    EXPECT_GT(seen[1].samples, seen[0].samples);
    EXPECT_EQ(seen[1].fields, 7u);
    EXPECT_NEAR(seen[1].mean_current_a, 280e-6, 20e-6);  // The plain board's mean.
    EXPECT_GT(seen[1].energy_j, 0.0);
    EXPECT_EQ(out.rfind("wattscope: " + dir_.file("capture.csv") + ": ", 0), 0u) << out;
    EXPECT_NE(out.find("(stopped)"), std::string::npos);
}

TEST_F(simulator_library, bad_options_leave_a_null_handle_and_one_message) {
    wattscope_options options = capture_options("xml");
    void* handle = &options;  // Anything: create must overwrite it.
    testing::internal::CaptureStderr();
    find<wattscope_create_fn>("wattscope_create")(&options, &handle);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "wattscope: unknown format 'xml'; use csv or gnuplot\n");
    EXPECT_EQ(handle, nullptr);

    prodtest_options test{dir_.file("none.txt"), options.config, "unused"};
    handle = &test;
    testing::internal::CaptureStderr();
    find<prodtest_create_fn>("prodtest_create")(&test, &handle);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "prodtest: cannot read " + dir_.file("none.txt") + ": No such file or directory\n");
    EXPECT_EQ(handle, nullptr);
}

TEST_F(simulator_library, a_production_test_runs_through_the_library) {
    prodtest_options options{dir_.write("limits.txt", "measure 10 ms\nsupply_voltage 2 1% V\n"),
                             dir_.write("plain.dat", standin_test::plain_board), "sim"};
    void* handle = nullptr;
    find<prodtest_create_fn>("prodtest_create")(&options, &handle);
    ASSERT_NE(handle, nullptr);
    testing::internal::CaptureStdout();
    EXPECT_EQ(find<prodtest_run_fn>("prodtest_run")(handle), 0);
    const std::string out = testing::internal::GetCapturedStdout();
    find<prodtest_destroy_fn>("prodtest_destroy")(handle);
    EXPECT_NE(out.find("prodtest: PASS, 1 of 1 parameters within limits"), std::string::npos)
        << out;
}

}  // namespace
