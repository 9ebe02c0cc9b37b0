#include "wattscope_sim/capture.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <regex>
#include <sstream>
#include <thread>

#include "scratch_dir.h"

namespace {

using standin::sim::capture;
using standin::sim::capture_end;
using standin_test::lines_of;
using standin_test::read_file;

// A capture of the plain board in a scratch directory, and what its run said.
class capture_test : public testing::Test {
  protected:
    capture_test() : board_(dir_.write("plain.dat", standin_test::plain_board)) {
        options_.sampfreq = 10000;
        options_.output = dir_.file("out.csv");
        options_.format = "csv";
        options_.trace_mode = "ws";
        options_.config = board_;
        options_.device = "unused";
        options_.maxoutsize = 1024;
        options_.range = "lo";
        options_.duration = 50;
    }

    std::unique_ptr<capture> make(int64_t window_ms = 0) {
        std::string error;
        auto settings = standin::sim::check_capture_options(options_, error);
        EXPECT_TRUE(settings) << error;
        if (!settings) {
            return nullptr;
        }
        if (window_ms > 0) {
            settings->window_ms = window_ms;
        }
        auto made = capture::create(std::move(*settings), error);
        EXPECT_TRUE(made) << error;
        return made;
    }

    int run(capture& c) {
        out_.str("");
        errors_.str("");
        return c.run(out_, errors_);
    }

    // The rows of the output file, without its header.
    std::vector<std::string> rows() const {
        std::vector<std::string> lines = lines_of(read_file(options_.output));
        const auto header_end = std::find_if(lines.begin(), lines.end(), [](const std::string& l) {
            return !l.empty() && l[0] != '#' && l[0] != 's';
        });
        return {header_end, lines.end()};
    }

    standin_test::scratch_dir dir_;
    std::string board_;
    wattscope_options options_{};
    std::ostringstream out_;
    std::ostringstream errors_;
};

TEST_F(capture_test, ends_by_itself_at_its_duration) {
    auto c = make();
    ASSERT_EQ(run(*c), 0);
    EXPECT_EQ(c->totals().end, capture_end::duration);
    EXPECT_EQ(c->totals().rows, 500u);  // 50 ms at 10000/s.
    const std::vector<std::string> r = rows();
    ASSERT_EQ(r.size(), 500u);
    EXPECT_EQ(r.front().substr(0, 9), "0,0.0000,");
    EXPECT_EQ(r.back().substr(0, 12), "499,0.0499,0");
    EXPECT_TRUE(std::regex_match(
        out_.str(),
        std::regex("wattscope: .*out\\.csv: 500 samples in 0\\.050 s \\(duration reached\\), "
                   "mean 280\\.0 uA, peak 1\\.000 mA, charge 14\\.00 uC, energy 28\\.00 uJ, "
                   "0 dropped\n")))
        << out_.str();
    EXPECT_EQ(errors_.str(), "");
}

class energy_at_rate : public capture_test, public testing::WithParamInterface<int32_t> {};

// 50 ms of the plain board is 14 uC at 2 V: 28 uJ, at any rate.
TEST_P(energy_at_rate, matches_the_model) {
    options_.sampfreq = GetParam();
    auto c = make();
    ASSERT_EQ(run(*c), 0);
    EXPECT_NEAR(c->totals().energy_nj, 28000.0, 28000.0 * 1e-4);
    const std::string last = rows().back();
    EXPECT_EQ(last.substr(last.size() - 13), "0.000028000,0") << last;
}

INSTANTIATE_TEST_SUITE_P(rates, energy_at_rate, testing::Values(1000, 3000, 10000, 20000));

struct size_case {
    const char* format;
    const char* mode;
    bool save_all;
};

class size_limit : public capture_test, public testing::WithParamInterface<size_case> {};

TEST_P(size_limit, is_never_passed_and_ends_the_capture) {
    options_.format = GetParam().format;
    options_.trace_mode = GetParam().mode;
    options_.saveall = GetParam().save_all;
    options_.maxoutsize = 2;
    options_.sampfreq = 100000;
    options_.duration = 0;
    auto c = make();
    ASSERT_EQ(run(*c), 0);
    EXPECT_EQ(c->totals().end, capture_end::size_limit);
    const std::string text = read_file(options_.output);
    EXPECT_LE(text.size(), 2048u);
    EXPECT_GT(text.size(), 2048u - 100);  // Not a row more would have fitted.
    EXPECT_EQ(text.back(), '\n');
    EXPECT_EQ(rows().size(), c->totals().rows);
    EXPECT_NE(out_.str().find("(size limit reached)"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(kinds, size_limit,
                         testing::Values(size_case{"csv", "ws", true},
                                         size_case{"csv", "ws", false},
                                         size_case{"gnuplot", "ws+", true},
                                         size_case{"gnuplot", "ws+", false}));

TEST_F(capture_test, a_stop_before_the_run_ends_it_at_once) {
    options_.duration = 0;
    auto c = make();
    c->stop();
    c->stop();
    EXPECT_EQ(run(*c), 1);
    EXPECT_EQ(c->totals().rows, 0u);
    EXPECT_EQ(read_file(options_.output),
              "sample,time_s,current_A,voltage_V,power_W,energy_J,clipped\n");
    EXPECT_NE(out_.str().find(": 0 samples in 0.000 s (stopped)"), std::string::npos);
}

// Stops from several threads at once, and one after the run returned.
TEST_F(capture_test, stops_from_any_thread_any_number_of_times) {
    options_.duration = 0;
    auto c = make();
    int result = 0;
    std::thread runner([&] { result = run(*c); });
    std::vector<std::thread> stoppers;
    for (int i = 0; i < 3; ++i) {
        stoppers.emplace_back([&] {
            c->stop();
            c->stop();
        });
    }
    for (std::thread& t : stoppers) {
        t.join();
    }
    runner.join();
    c->stop();
    EXPECT_EQ(result, 1);
    EXPECT_EQ(rows().size(), c->totals().rows);
}

TEST_F(capture_test, a_stop_ends_the_wait_for_the_trigger) {
    std::string text = standin_test::plain_board;
    text.replace(text.find("trigger_delay_us 30000"), 22, "trigger_delay_us 600000000");
    options_.config = dir_.write("late.dat", text);
    options_.trig = 1;
    auto c = make();
    int result = 0;
    std::thread runner([&] { result = run(*c); });
    c->stop();
    runner.join();
    EXPECT_EQ(result, 1);
    EXPECT_EQ(c->totals().rows, 0u);
}

TEST_F(capture_test, the_trigger_comes_before_the_first_sample) {
    options_.trig = 1;
    options_.duration = 20;
    auto c = make();
    const auto start = std::chrono::steady_clock::now();
    ASSERT_EQ(run(*c), 0);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(50));
    EXPECT_EQ(c->totals().rows, 200u);
}

struct shape_case {
    const char* format;
    const char* mode;
    size_t header_lines;
    char separator;
    size_t columns;
};

class file_shape : public capture_test, public testing::WithParamInterface<shape_case> {};

TEST_P(file_shape, follows_format_and_trace_mode) {
    const shape_case& shape = GetParam();
    options_.format = shape.format;
    options_.trace_mode = shape.mode;
    options_.sampfreq = 1000;
    auto c = make();
    ASSERT_EQ(run(*c), 0);
    const std::vector<std::string> lines = lines_of(read_file(options_.output));
    ASSERT_EQ(lines.size(), shape.header_lines + 50);
    for (size_t i = 0; i < shape.header_lines; ++i) {
        EXPECT_EQ(lines[i][0], shape.separator == ',' ? 's' : '#') << lines[i];
    }
    const char* functions_of_mode[2][2] = {{"work", "work"}, {"wait", "poll"}};
    for (size_t i = 0; i < 50; ++i) {
        std::vector<std::string> fields;
        std::istringstream row(lines[shape.header_lines + i]);
        for (std::string field; std::getline(row, field, shape.separator);) {
            fields.push_back(field);
        }
        ASSERT_EQ(fields.size(), shape.columns) << lines[shape.header_lines + i];
        EXPECT_EQ(fields[0], std::to_string(i));
        EXPECT_EQ(std::stod(fields[1]), static_cast<double>(i) / 1000);
        if (shape.columns == 9) {
            const int mode = i % 10 < 2 ? 0 : 1;  // 2 ms busy, 8 ms idle.
            EXPECT_TRUE(fields[8] == functions_of_mode[mode][0] ||
                        fields[8] == functions_of_mode[mode][1])
                << fields[8] << " in sample " << i;
            const uint64_t pc = std::stoull(fields[7], nullptr, 16);
            const uint64_t base = fields[8] == "work"   ? 0x1000
                                  : fields[8] == "wait" ? 0x2000
                                                        : 0x3000;
            const uint64_t size = fields[8] == "work" ? 0x100 : fields[8] == "wait" ? 0x10 : 0x80;
            EXPECT_TRUE(pc >= base && pc < base + size) << fields[7] << " " << fields[8];
        }
    }
    if (shape.columns == 9) {
        EXPECT_NE(out_.str().find("; energy by function: work "), std::string::npos) << out_.str();
    }
}

INSTANTIATE_TEST_SUITE_P(kinds, file_shape,
                         testing::Values(shape_case{"csv", "ws", 1, ',', 7},
                                         shape_case{"csv", "ws+", 1, ',', 9},
                                         shape_case{"gnuplot", "ws", 3, ' ', 7},
                                         shape_case{"gnuplot", "ws+", 3, ' ', 9}));

// Without saveall the file keeps the latest window: here 20 ms, 200 samples.
TEST_F(capture_test, without_saveall_the_file_keeps_the_latest_window) {
    options_.duration = 100;
    for (const char* format : {"csv", "gnuplot"}) {
        options_.format = format;
        auto c = make(20);
        ASSERT_EQ(run(*c), 0);
        const std::vector<std::string> r = rows();
        ASSERT_EQ(r.size(), 200u) << format;
        const char separator = format[0] == 'c' ? ',' : ' ';
        for (size_t i = 0; i < r.size(); ++i) {
            ASSERT_EQ(r[i].substr(0, r[i].find(separator)), std::to_string(800 + i)) << format;
        }
        EXPECT_EQ(c->totals().rows_kept, 200u);
        EXPECT_NE(out_.str().find(": 1000 samples (last 200 kept) in 0.100 s"), std::string::npos)
            << out_.str();
        EXPECT_EQ(dir_.names().size(), 2u);  // No rewrite left a file behind.
    }
    options_.saveall = 1;
    auto c = make(20);
    ASSERT_EQ(run(*c), 0);
    EXPECT_EQ(rows().size(), 1000u);
}

TEST_F(capture_test, a_write_error_ends_the_run_and_says_so) {
    options_.output = "/dev/full";
    auto c = make();
    EXPECT_EQ(run(*c), -1);
    EXPECT_EQ(c->totals().end, capture_end::write_error);
    EXPECT_EQ(errors_.str(), "wattscope: cannot write /dev/full: No space left on device\n");
    EXPECT_NE(out_.str().find("(write error)"), std::string::npos);
}

TEST_F(capture_test, a_removed_file_ends_the_run) {
    options_.duration = 0;
    auto c = make();
    int result = 0;
    std::thread runner([&] { result = run(*c); });
    // Rows reach the file within a second; wait for the first ones.
    for (int i = 0; i < 400 && read_file(options_.output).size() < 100; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    ::unlink(options_.output.c_str());
    runner.join();
    EXPECT_EQ(result, -1);
    EXPECT_EQ(errors_.str(),
              "wattscope: " + options_.output + " was removed or replaced during the capture\n");
}

struct option_case {
    const char* name;
    void (*change)(wattscope_options&, const std::string& dir);
    const char* message;  // @ stands for the scratch directory.
};

class wrong_options : public capture_test, public testing::WithParamInterface<option_case> {};

TEST_P(wrong_options, make_no_capture_and_name_the_option) {
    GetParam().change(options_, dir_.file(""));
    std::string error;
    auto settings = standin::sim::check_capture_options(options_, error);
    std::unique_ptr<capture> made =
        settings ? capture::create(std::move(*settings), error) : nullptr;
    EXPECT_EQ(made, nullptr);
    std::string expected = GetParam().message;
    for (size_t at; (at = expected.find('@')) != std::string::npos;) {
        expected.replace(at, 1, dir_.file(""));
    }
    EXPECT_EQ(error, expected);
}

INSTANTIATE_TEST_SUITE_P(
    table, wrong_options,
    testing::Values(
        option_case{"no_config", [](wattscope_options& o, const std::string&) { o.config = ""; },
                    "no board configuration file; connect with --config <file>"},
        option_case{"missing_config",
                    [](wattscope_options& o, const std::string& d) { o.config = d + "none.dat"; },
                    "cannot read @none.dat: No such file or directory"},
        option_case{"malformed_config",
                    [](wattscope_options& o, const std::string& d) {
                        o.config = d + "bad.dat";
                        std::ofstream(o.config) << "board 1\ntarget t\nsupply_uv 1\nmode x\n";
                    },
                    "@bad.dat:4: expected 'mode <name> <nanoamperes> <microseconds> "
                    "[<function>:<share>...]'"},
        option_case{"device", [](wattscope_options& o, const std::string&) { o.device = "PRB210"; },
                    "unknown device 'PRB210'; the probe simulator answers to 'unused' and 'sim'"},
        option_case{"trace_mode",
                    [](wattscope_options& o, const std::string&) { o.trace_mode = "WS"; },
                    "unknown trace mode 'WS'; use ws or ws+"},
        option_case{"format", [](wattscope_options& o, const std::string&) { o.format = "json"; },
                    "unknown format 'json'; use csv or gnuplot"},
        option_case{"range", [](wattscope_options& o, const std::string&) { o.range = "mid"; },
                    "unknown range 'mid'; use lo or hi"},
        option_case{"rate_zero", [](wattscope_options& o, const std::string&) { o.sampfreq = 0; },
                    "sample rate 0 is out of range; use 1 to 10000000 samples per second"},
        option_case{"rate_high",
                    [](wattscope_options& o, const std::string&) { o.sampfreq = 10000001; },
                    "sample rate 10000001 is out of range; use 1 to 10000000 samples per second"},
        option_case{"size", [](wattscope_options& o, const std::string&) { o.maxoutsize = -1; },
                    "maximum output size -1 is out of range; give a size in KiB above 0"},
        option_case{"trig_unwired",
                    [](wattscope_options& o, const std::string& d) {
                        o.config = d + "untriggered.dat";
                        std::ofstream(o.config) << "board 1\ntarget t\nsupply_uv 1\nmode x 1 1\n";
                        o.trig = 1;
                    },
                    "--trig waits for the hardware trigger, and @untriggered.dat wires none (no "
                    "trigger_delay_us)"},
        option_case{"output_dir",
                    [](wattscope_options& o, const std::string& d) { o.output = d + "no/out.csv"; },
                    "cannot create output file '@no/out.csv': No such file or directory"},
        option_case{"output_empty", [](wattscope_options& o, const std::string&) { o.output = ""; },
                    "cannot create output file '': No such file or directory"},
        option_case{"output_is_config",
                    [](wattscope_options& o, const std::string&) { o.output = o.config; },
                    "the output file '@plain.dat' is the board configuration"}),
    [](const testing::TestParamInfo<option_case>& param_info) { return param_info.param.name; });

TEST_F(capture_test, the_probes_own_name_is_a_device_too) {
    options_.device = "sim";
    std::string error;
    EXPECT_TRUE(standin::sim::check_capture_options(options_, error)) << error;
}

}  // namespace
