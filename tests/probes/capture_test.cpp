#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <sstream>
#include <thread>

#include "common/atomic_file.h"
#include "scratch_dir.h"
#include "sources.h"

namespace {

using standin::sim::capture;
using standin_test::read_file;

// The plain board (1 mA for 2 ms, 0.1 mA for 8 ms, at 2 V) captured into a scratch directory.
class capture_test : public testing::Test {
  protected:
    capture_test() : board_(dir_.write("plain.dat", standin_test::plain_board)) {
        options_.sampfreq = 10000, options_.maxoutsize = 1024, options_.duration = 50;
        options_.output = output_, options_.config = board_, options_.device = "unused";
        options_.format = "csv", options_.trace_mode = "ws", options_.range = "lo";
    }

    std::unique_ptr<capture> make(int64_t window_ms = 0, int64_t max_bytes = 0) {
        auto settings = standin::sim::check_capture_options(options_, error_);
        if (!settings) {
            return nullptr;
        }
        settings->window_ms = window_ms > 0 ? window_ms : settings->window_ms;
        settings->max_bytes = max_bytes > 0 ? max_bytes : settings->max_bytes;
        return standin::sim::make_capture(std::move(*settings), error_);
    }

    // As zelno runs it: on a thread of its own, stopped at the duration.
    int run(capture& c) {
        int result = 0;
        std::thread runner([&] { result = c.run(out_, errors_); });
        if (options_.duration > 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(options_.duration));
            c.stop();
        }
        runner.join();
        return result;
    }

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

// 50 ms of the plain board: 14 uC at 2 V, 28 uJ, ended by zelno's stop.
TEST_F(capture_test, ends_at_its_duration_with_the_models_energy) {
    ASSERT_EQ(run(*make()), 0);
    const std::vector<std::string> r = rows();
    ASSERT_EQ(r.size(), 500u);
    EXPECT_EQ(r.back().substr(0, 12) + r.back().substr(r.back().size() - 13),
              "499,0.0499,00.000028000,0");
    EXPECT_EQ(out_.str(), "wattscope: " + output_ +
                              ": 500 samples in 0.050 s (duration reached), mean 280.0 uA, peak "
                              "1.000 mA, charge 14.00 uC, energy 28.00 uJ, 0 dropped\n");
}

// A clipped reading makes the mean wrong: the summary counts them and names the range.
TEST_F(capture_test, counts_clipped_samples_and_names_the_range_that_holds_them) {
    options_.config = dir_.write(
        "burst.dat",
        std::regex_replace(standin_test::plain_board, std::regex("busy 1000000"), "busy 80000000"));
    ASSERT_EQ(run(*make()), 0);
    EXPECT_NE(
        out_.str().find(", 0 dropped, 100 clipped beyond 50 mA (range hi holds them: -r hi)\n"),
        std::string::npos)
        << out_.str();
}

// Before it starts, a capture says what its window drops and when the size
// cap would end it early, with the cap that would hold what it was asked for
// (range lo's note: e2e/demo/simulator_at_work.t).
TEST_F(capture_test, says_at_the_start_what_the_window_drops_and_a_cap_too_small) {
    struct row {
        const char* range;
        int32_t rate, duration;
        int saveall;
        const char* notes;
    };
    const std::string keeps = "wattscope: note: " + output_ + " keeps the last ";
    const row rows[] = {
        {"lo", 2000, 60000, 0, ""},
        {"hi", 2000, 61000, 1, ""},
        {"hi", 500000, 0, 0,
         "60 s of samples (range hi); --saveall keeps them all\nwattscope: note: the 60 s window "
         "at 500000 samples/s takes about 2597 MiB, more than --maxoutsize 1024: the size limit "
         "would end the capture after about 33 s; --maxoutsize 2597 holds it\n"},
        {"hi", 500000, 40000, 1,
         "wattscope: note: 40 s of samples at 500000 samples/s takes about 1259 MiB, more than "
         "--maxoutsize 1024: the size limit would end the capture after about 33 s; --maxoutsize "
         "1259 holds it\n"}};
    for (const row& r : rows) {
        options_.range = r.range, options_.sampfreq = r.rate, options_.duration = r.duration;
        options_.saveall = r.saveall;
        auto c = make();
        ASSERT_NE(c, nullptr) << error_;
        const std::string notes = c->start_notes();
        EXPECT_EQ(notes, r.notes[0] == 0 || r.notes[0] == 'w' ? r.notes : keeps + r.notes)
            << r.range << " " << r.rate;
    }
}

// zelno's stop at the limit leaves the capture to finish its duration from
// the trigger; a Ctrl+C after it must still end the capture at once.
TEST_F(capture_test, a_stop_after_the_limit_stop_ends_the_capture) {
    const std::string slow =
        std::regex_replace(standin_test::plain_board, std::regex("trigger_delay_us 30000"),
                           "trigger_delay_us 60000000");
    options_.config = dir_.write("slow.dat", slow), options_.trig = 1, options_.duration = 100;
    auto c = make();
    ASSERT_NE(c, nullptr) << error_;
    std::thread runner([&] { c->run(out_, errors_); });
    // The pauses only give the stops a chance to find the run waiting for
    // the trigger; whenever they come, the capture must end stopped.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    c->stop();  // Within the last 250 ms: taken as zelno's limit.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    c->stop();
    runner.join();
    EXPECT_NE(out_.str().find("(stopped)"), std::string::npos) << out_.str();
}

// The size limit is never passed, and the file holds whole rows only.
TEST_F(capture_test, ends_at_the_size_limit) {
    options_.duration = 0, options_.format = "gnuplot", options_.trace_mode = "ws+";
    auto c = make(0, 8192);
    ASSERT_EQ(run(*c), 0);
    const std::string text = read_file(output_);
    EXPECT_TRUE(text.size() <= 8192u && text.size() > 8192u - 100) << text.size();
    EXPECT_EQ(rows().size(), c->totals().rows);
    EXPECT_EQ(standin_test::lines_of(text).size(), c->totals().rows + 3);  // 3 header lines.
    EXPECT_NE(out_.str().find("(size limit reached), "), std::string::npos);
}

// The latest window (100 ms), rewritten while sampling and cut exactly at the end.
TEST_F(capture_test, without_saveall_the_file_keeps_the_latest_window) {
    options_.duration = 1000;
    ASSERT_EQ(run(*make(100)), 0) << errors_.str();
    const std::vector<std::string> r = rows();
    ASSERT_EQ(r.size(), 1000u);
    EXPECT_EQ(r.front().substr(0, 5), "9000,");
    EXPECT_NE(out_.str().find(": 10000 samples (last 1000 kept) in 1.000 s"), std::string::npos);
    EXPECT_EQ(dir_.count(), 2);
    // Nameless until it takes the output's, so a kill leaves nothing behind.
    if (standin_test::temporaries_are_nameless()) {
        standin::temp_file temp = standin::create_temp_beside(output_);
        EXPECT_EQ(dir_.count(), 2);
        standin::discard_temp(temp);
    }
}

// After a write error the summary tells of the rows in the file, not of those lost.
TEST_F(capture_test, after_a_write_error_the_summary_tells_what_the_file_holds) {
    options_.duration = 0, options_.sampfreq = 200000, options_.saveall = 1;
    auto c = make();
    if (!standin_test::with_file_size_limit(100000, [&] { EXPECT_EQ(run(*c), -1); })) {
        GTEST_SKIP() << "Windows has no file size limit to make a write fail; the code is shared";
    }
    EXPECT_EQ(errors_.str(), "wattscope: cannot write " + output_ + ": File too large\n");
    EXPECT_EQ(read_file(output_).back(), '\n');  // Cut back to its last whole row.
    const std::vector<std::string> r = rows();
    ASSERT_EQ(c->totals().rows, r.size());
    EXPECT_NEAR(c->totals().energy_nj * 1e-9, std::stod(r.back().substr(r.back().size() - 13)),
                1e-9);
    EXPECT_NE(out_.str().find(": " + std::to_string(r.size()) + " samples in "), std::string::npos);
}

// Writing to a FIFO would block where no stop reaches; a device takes every row as it is.
TEST_F(capture_test, refuses_a_pipe_and_writes_a_device) {
    options_.output = standin_test::make_pipe(dir_);
    EXPECT_EQ(make(), nullptr);
    EXPECT_EQ(error_, "the output file '" + std::string(VX_UTL::text_of(options_.output)) +
                          "' is neither a regular file nor a character device");
    options_.output = standin_test::null_device, options_.trace_mode = "ws+";
    EXPECT_EQ(run(*make()), 0) << errors_.str();
    // No function table beside a device: its folder is no place for one.
    EXPECT_EQ(out_.str().find("table in"), std::string::npos) << out_.str();
    EXPECT_FALSE(
        std::filesystem::exists(std::string(standin_test::null_device) + ".functions.csv"));
}

// The function table holds every row the summary counts, the most energy first.
TEST_F(capture_test, the_function_table_adds_up_to_the_summary) {
    options_.trace_mode = "ws+";
    auto c = make();
    ASSERT_EQ(run(*c), 0);
    const std::vector<std::string> lines =
        standin_test::lines_of(read_file(output_ + ".functions.csv"));
    ASSERT_EQ(
        lines.at(0),
        "function,samples,time_s,time_percent,mean_current_A,charge_C,energy_J,energy_percent");
    uint64_t samples = 0;
    double energy = 0, percent = 0, previous = 1e9;
    for (size_t i = 1; i < lines.size(); ++i) {
        std::istringstream row(lines[i].substr(lines[i].find(',') + 1));
        std::vector<double> f;
        for (std::string field; std::getline(row, field, ',');) {
            f.push_back(std::stod(field));
        }
        ASSERT_EQ(f.size(), 7u) << lines[i];
        EXPECT_LE(f[5], previous) << lines[i];
        samples += static_cast<uint64_t>(f[0]), energy += f[5], percent += f[6], previous = f[5];
    }
    EXPECT_EQ(lines.size(), 4u);  // work, wait and poll.
    EXPECT_EQ(samples, c->totals().rows);
    EXPECT_NEAR(energy, c->totals().energy_nj * 1e-9, 3 * 0.5e-9);
    EXPECT_NEAR(percent, 100, 0.002);
    EXPECT_NE(out_.str().find("; table in " + output_ + ".functions.csv\n"), std::string::npos);
}

}  // namespace
