#include "wattscope_sim/capture.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <sstream>
#include <thread>
#include <tuple>

#include "common/atomic_file.h"
#include "scratch_dir.h"

namespace {

using standin::sim::capture;
using standin::sim::capture_end;
using standin_test::read_file;

// The plain board (1 mA for 2 ms, 0.1 mA for 8 ms, at 2 V) captured into a
// scratch directory, run as zelno runs it.
class capture_test : public testing::Test {
  protected:
    capture_test() : board_(dir_.write("plain.dat", standin_test::plain_board)) {
        options_.sampfreq = 10000, options_.maxoutsize = 1024, options_.duration = 50;
        options_.output = output_, options_.config = board_, options_.device = "unused";
        options_.format = "csv", options_.trace_mode = "ws", options_.range = "lo";
    }

    std::unique_ptr<capture> make(int64_t window_ms = 0, int64_t max_bytes = 0) {
        std::string error;
        auto settings = standin::sim::check_capture_options(options_, error);
        if (settings) {
            settings->window_ms = window_ms > 0 ? window_ms : settings->window_ms;
            settings->max_bytes = max_bytes > 0 ? max_bytes : settings->max_bytes;
        }
        auto made = settings ? capture::create(std::move(*settings), error) : nullptr;
        error_ = error;
        return made;
    }

    // On a thread of its own, stopped after `stop_after_ms` (by default the
    // duration, as zelno stops it); 0 stops nothing.
    int run(capture& c, int stop_after_ms = -1) {
        out_.str("");
        int result = 0;
        std::thread runner([&] { result = c.run(out_, errors_); });
        if (const int after = stop_after_ms < 0 ? options_.duration : stop_after_ms; after > 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(after));
            c.stop();
        }
        runner.join();
        return result;
    }

    // The rows of the output file, without its header.
    std::vector<std::string> rows() const {
        std::vector<std::string> lines = standin_test::lines_of(read_file(output_));
        std::erase_if(lines, [](const std::string& l) { return l[0] < '0' || l[0] > '9'; });
        return lines;
    }

    standin_test::scratch_dir dir_;
    std::string board_;
    std::string output_ = dir_.file("out.csv");
    wattscope_options options_{};
    std::string error_;
    std::ostringstream out_;
    std::ostringstream errors_;
};

// 50 ms of the plain board is 14 uC at 2 V: 28 uJ at any rate, in exactly
// the duration's samples, after zelno's stop.
TEST_F(capture_test, ends_at_its_duration_with_the_models_energy) {
    for (const int rate : {3000, 10000}) {
        options_.sampfreq = rate;
        ASSERT_EQ(run(*make()), 0);
        const std::vector<std::string> r = rows();
        EXPECT_EQ(r.size(), static_cast<size_t>(rate / 20));
        EXPECT_EQ(r.back().substr(r.back().size() - 13), "0.000028000,0") << rate;
    }
    EXPECT_EQ(out_.str(), "wattscope: " + output_ +
                              ": 500 samples in 0.050 s (duration reached), mean 280.0 uA, peak "
                              "1.000 mA, charge 14.00 uC, energy 28.00 uJ, 0 dropped\n");
}

// The duration counts from the trigger (30 ms), though zelno stops at the
// duration from the start; and the run waits for that stop.
TEST_F(capture_test, a_trigger_delays_the_duration_and_the_run_waits_for_the_stop) {
    options_.trig = 1;
    options_.duration = 20;
    auto c = make();
    std::atomic<bool> returned{false};
    std::thread runner([&] { c->run(out_, errors_), returned = true; });
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_FALSE(returned);
    c->stop();
    runner.join();
    EXPECT_EQ(rows().size(), 200u);
    c.reset();  // Its output is free for the next.
    c = make();
    EXPECT_EQ(run(*c), 0);
    EXPECT_EQ(rows().size(), 200u);
    EXPECT_EQ(c->totals().end, capture_end::duration);
}

// A stop well before the duration (Ctrl+C) ends the capture with what it
// has: in the wait for the trigger, or from several threads at once.
TEST_F(capture_test, an_early_stop_ends_the_capture_with_what_it_has) {
    options_.duration = 5000;
    options_.trig = 1;
    EXPECT_EQ(run(*make(), 1), 1);
    EXPECT_EQ(read_file(output_), "sample,time_s,current_A,voltage_V,power_W,energy_J,clipped\n");
    EXPECT_NE(out_.str().find(": 0 samples in 0.000 s (stopped)"), std::string::npos);
    auto c = make();
    std::thread stoppers[] = {std::thread([&] { c->stop(); }), std::thread([&] { c->stop(); })};
    EXPECT_EQ(run(*c, 300), 1);
    for (std::thread& t : stoppers) {
        t.join();
    }
    EXPECT_EQ(rows().size(), c->totals().rows);
}

// Each format and mode, to the size limit: never passed, whole rows only.
TEST_F(capture_test, follows_format_and_mode_to_the_size_limit) {
    options_.duration = 0;
    for (const auto& [format, mode, header_lines, columns] :
         {std::tuple{"csv", "ws", 1u, 7}, std::tuple{"gnuplot", "ws+", 3u, 9}}) {
        options_.format = format, options_.trace_mode = mode, options_.saveall = columns == 7;
        auto c = make(0, 8192);
        ASSERT_EQ(run(*c), 0);
        const std::string text = read_file(output_);
        EXPECT_TRUE(text.size() <= 8192u && text.size() > 8192u - 100) << text.size();
        const std::vector<std::string> r = rows();
        ASSERT_EQ(r.size(), c->totals().rows);
        EXPECT_EQ(standin_test::lines_of(text).size(), r.size() + header_lines);
        const char separator = format[0] == 'c' ? ',' : ' ';
        for (size_t i = 0; i < r.size(); ++i) {
            ASSERT_EQ(std::count(r[i].begin(), r[i].end(), separator) + 1, columns) << r[i];
            ASSERT_EQ(r[i].substr(0, r[i].find(separator)), std::to_string(i));
        }
        EXPECT_NE(out_.str().find("(size limit reached)"), std::string::npos);
    }
    EXPECT_NE(out_.str().find("; energy by function: work "), std::string::npos);
}

// Without saveall the file keeps the latest window, here 100 ms: rewritten
// on another thread while sampling, cut exactly at the end, no file left.
TEST_F(capture_test, without_saveall_the_file_keeps_the_latest_window) {
    options_.duration = 1000;
    ASSERT_EQ(run(*make(100)), 0);
    const std::vector<std::string> r = rows();
    ASSERT_EQ(r.size(), 1000u);
    EXPECT_EQ(r.front().substr(0, 5), "9000,");
    EXPECT_NE(out_.str().find(": 10000 samples (last 1000 kept) in 1.000 s"), std::string::npos);
    EXPECT_EQ(dir_.names().size(), 2u);
    // A temporary file has no name until it takes the output's, so that a
    // process killed meanwhile leaves nothing behind.
    standin::temp_file temp = standin::create_temp_beside(output_);
    EXPECT_EQ(dir_.names().size(), 2u);
    standin::discard_temp(temp);
}

// After a write error the summary tells of the rows in the file, not of
// those the write lost: here the file may not pass 100 000 bytes.
TEST_F(capture_test, after_a_write_error_the_summary_tells_what_the_file_holds) {
    options_.duration = 0, options_.sampfreq = 200000, options_.saveall = 1;
    auto c = make();
    rlimit old{};
    ::getrlimit(RLIMIT_FSIZE, &old);
    const auto old_handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = old;
    small.rlim_cur = 100000;
    ::setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_EQ(run(*c), -1);
    ::setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, old_handler);
    EXPECT_EQ(errors_.str(), "wattscope: cannot write " + output_ + ": File too large\n");
    const std::vector<std::string> r = rows();
    ASSERT_EQ(c->totals().rows, r.size());
    EXPECT_NEAR(c->totals().energy_nj * 1e-9, std::stod(r.back().substr(r.back().size() - 13)),
                1e-9);
    EXPECT_NE(out_.str().find(": " + std::to_string(r.size()) + " samples in "), std::string::npos);
}

struct option_case {
    const char* name;
    void (*change)(wattscope_options&, const std::string& dir);
    const char* message;  // @ stands for the scratch directory.
};

class wrong_options : public capture_test, public testing::WithParamInterface<option_case> {};

TEST_P(wrong_options, make_no_capture_and_say_why) {
    const std::string dir = dir_.file("");
    GetParam().change(options_, dir);
    EXPECT_EQ(make(), nullptr);
    std::string expected = GetParam().message;
    for (size_t at; (at = expected.find('@')) != std::string::npos;) {
        expected.replace(at, 1, dir);
    }
    EXPECT_EQ(error_, expected);
}

#define OPTION(name, change, message)                                                          \
    option_case {                                                                              \
        name,                                                                                  \
            []([[maybe_unused]] wattscope_options& o, [[maybe_unused]] const std::string& d) { \
                change;                                                                        \
            },                                                                                 \
            message                                                                            \
    }

INSTANTIATE_TEST_SUITE_P(
    table, wrong_options,
    testing::Values(
        OPTION("rate", o.sampfreq = 0,
               "sample rate 0 is out of range; use 1 to 10000000 samples per second"),
        OPTION("size", o.maxoutsize = 0,
               "maximum output size 0 is out of range; give a size in MiB above 0"),
        OPTION("no_folder", o.output = d + "no/out.csv",
               "cannot create output file '@no/out.csv': No such file or directory"),
        OPTION("output_is_config", o.output = o.config,
               "the output file '@plain.dat' is the board configuration"),
        OPTION("fifo", (::mkfifo((d + "fifo").c_str(), 0600), o.output = d + "fifo"),
               "the output file '@fifo' is neither a regular file nor a character device")),
    [](const testing::TestParamInfo<option_case>& param) { return param.param.name; });

}  // namespace
