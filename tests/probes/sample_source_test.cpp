// The engine on a scripted source: what an instrument may do that the
// simulator never does (gaps, averaged periods, a trigger found in the
// data, failing while it runs) and the finish that every end owes it.

#include <gtest/gtest.h>

#include <functional>
#include <sstream>

#include "common/atomic_file.h"
#include "common/board_file.h"
#include "engine/capture.h"
#include "scratch_dir.h"
#include "sources.h"

namespace {

using standin::sim::clock;
using standin::sim::period_sample;
using standin::sim::sample_source;

// Hands over what its script says, one step per poll; an empty step ends a
// round of polls, and the end of the script brings its failure, if any.
// Period n reads (n + 1) uA at 2 V.
struct scripted_source final : sample_source {
    std::vector<ready_periods> script;
    bool averaging = false;
    std::string failure_after;
    int* finishes = nullptr;
    std::function<void()> on_start;
    size_t at = 0;
    uint64_t next = 0;
    std::string failed;

    std::string_view name() const override { return "the scripted probe"; }
    std::string describe(std::string_view) const override { return "# Scripted\n"; }
    bool averages() const override { return averaging; }
    bool measures_voltage() const override { return false; }
    size_hint largest_periods() const override { return {}; }
    void start(clock::time_point) override { on_start ? on_start() : void(); }
    ready_periods poll(clock::time_point) override {
        failed = at == script.size() ? failure_after : "";
        const ready_periods step = at == script.size() ? ready_periods{} : script[at++];
        next += step.lost;
        return step;
    }
    void take(period_sample* into, size_t count) override {
        for (size_t i = 0; i < count; ++i, ++next) {
            const auto na = static_cast<int64_t>(next + 1) * 1000;
            into[i] = period_sample{};
            into[i].current_na = na, into[i].voltage_uv = 2'000'000, into[i].power_nw = 2 * na;
            into[i].min_na = na - 500, into[i].max_na = na + 500;
        }
    }
    clock::time_point next_ready_at() const override { return clock::now(); }
    const std::string& failure() const override { return failed; }
    standin::sim::clip_advice clipping() const override { return {}; }
    void finish() override { ++*finishes; }
};

constexpr standin::sim::probe_traits scripted_traits{
    "the scripted probe", 100'000, {{"lo", 2000}, {"hi", 2000}}, false, false, true};

class sample_source_test : public testing::Test {
  protected:
    sample_source_test() {
        options_.sampfreq = 1000, options_.maxoutsize = 1024, options_.duration = 100;
        options_.output = output_, options_.config = board_, options_.device = "scripted";
        options_.format = "csv", options_.trace_mode = "ws", options_.range = "lo";
    }

    // With a duration, zelno's stop at the limit comes as the run starts:
    // within the last moments of a short duration, it ends nothing early.
    std::unique_ptr<standin::sim::capture> make(std::vector<sample_source::ready_periods> script,
                                                bool averages = false, std::string failure = "",
                                                int64_t max_bytes = 0) {
        auto settings = standin::sim::check_capture_settings(
            options_, standin::parse_board(standin_test::plain_board, "plain.dat"), scripted_traits,
            error_);
        EXPECT_TRUE(settings) << error_;
        settings->max_bytes = max_bytes > 0 ? max_bytes : settings->max_bytes;
        auto source = std::make_unique<scripted_source>();
        source->script = std::move(script), source->averaging = averages;
        source->failure_after = std::move(failure), source->finishes = &finishes_;
        if (options_.duration > 0) {
            source->on_start = [this] { made_->stop(); };
        }
        auto made = standin::sim::capture::create(std::move(*settings), std::move(source), error_);
        made_ = made.get();
        return made;
    }

    standin_test::scratch_dir dir_;
    std::string board_ = dir_.write("plain.dat", standin_test::plain_board);
    std::string output_ = dir_.file("out.csv");
    wattscope_options options_{};
    std::string error_;
    std::ostringstream out_;
    std::ostringstream errors_;
    int finishes_ = 0;
    standin::sim::capture* made_ = nullptr;  // The latest, for its source's start.
};

// A stop within the last moments of the duration is zelno's: the capture
// then ends at its duration in periods, however the source paces them.
TEST_F(sample_source_test, gaps_averages_a_late_trigger_and_a_failure_end_as_they_should) {
    struct row {
        const char* what;
        int32_t duration;  // ms at 1000 periods/s.
        std::vector<sample_source::ready_periods> script;
        bool averages;
        std::string failure;  // At the end of the script; the capture's error line.
        const char* file;     // Without the header.
        const char* summary;
    };
    const row rows[] = {
        {"a gap is left out and counted",
         4,
         {{0, 2}, {1, 1}},
         false,
         "",
         "0,0.000,0.000001000,2.000000,0.000002000,0.000000002,0\n"
         "1,0.001,0.000002000,2.000000,0.000004000,0.000000006,0\n"
         "3,0.003,0.000004000,2.000000,0.000008000,0.000000014,0\n",
         "3 samples in 0.004 s (duration reached), mean 2.333 uA, peak 4.000 uA, charge 7.000 nC, "
         "energy 14.00 nJ, 1 dropped"},
        {"averaged periods carry their least and most",
         1,
         {{0, 1}},
         true,
         "",
         "0,0.000,0.000001000,2.000000,0.000002000,0.000000002,0,0.000000500,0.000001500\n",
         "1 samples in 0.001 s (duration reached)"},
        {"the duration counts from the first period after the trigger",
         100,
         {{0, 0}, {0, 0}, {0, 60}, {10, 60}, {0, 0}},
         false,
         "",
         nullptr,
         "90 samples in 0.100 s (duration reached), mean 48.83 uA, peak 100.0 uA"},
        {"a failing source ends the capture and keeps its rows",
         0,
         {{0, 1}, {0, 0}},
         false,
         "the PPK2 is gone",
         "0,0.000,0.000001000,2.000000,0.000002000,0.000000002,0\n",
         "1 samples in 0.001 s (probe error)"},
    };
    for (const row& r : rows) {
        SCOPED_TRACE(r.what);
        finishes_ = 0, out_.str(""), errors_.str("");
        options_.duration = r.duration;
        auto c = make(r.script, r.averages, r.failure);
        ASSERT_NE(c, nullptr) << error_;
        EXPECT_EQ(c->run(out_, errors_), r.failure.empty() ? 0 : -1);
        c.reset();
        const std::string text = standin_test::read_file(output_);
        const std::string header = r.averages ? "sample,time_s,current_A,voltage_V,power_W,"
                                                "energy_J,clipped,current_min_A,current_max_A\n"
                                              : "sample,time_s,current_A,voltage_V,power_W,"
                                                "energy_J,clipped\n";
        EXPECT_EQ(text.substr(0, header.size()), header);
        if (r.file != nullptr) {
            EXPECT_EQ(text.substr(header.size()), r.file);
        } else {
            EXPECT_NE(text.find("\n59,0.059,"), std::string::npos);
            EXPECT_EQ(text.find("\n60,"), std::string::npos);
            EXPECT_NE(text.find("\n99,0.099,"), std::string::npos);
        }
        EXPECT_EQ(errors_.str(), r.failure.empty() ? "" : "wattscope: " + r.failure + "\n");
        EXPECT_EQ(out_.str().rfind("wattscope: " + output_ + ": " + r.summary, 0), 0u)
            << out_.str();
        EXPECT_EQ(finishes_, 1);
    }
}

// The device stops and the target goes off whatever ends the capture.
TEST_F(sample_source_test, the_source_is_finished_once_at_every_end) {
    {
        auto never_run = make({});
        ASSERT_NE(never_run, nullptr);
    }
    EXPECT_EQ(finishes_, 1) << "destroyed without a run";

    finishes_ = 0;
    auto stopped = make({{0, 5}});
    stopped->stop();
    EXPECT_EQ(stopped->run(out_, errors_), 1);
    stopped.reset();
    EXPECT_EQ(finishes_, 1) << "stopped before it began";

    finishes_ = 0;
    options_.duration = 0, options_.saveall = 1;
    auto full = make({{0, 4000}}, false, "", 1000);
    EXPECT_EQ(full->run(out_, errors_), 0);
    full.reset();
    EXPECT_EQ(finishes_, 1) << "at the size limit";

    finishes_ = 0;
    auto failing = make({{0, 4000}, {0, 4000}});
    const bool limited = standin_test::with_file_size_limit(
        1000, [&] { EXPECT_EQ(failing->run(out_, errors_), -1); });
    failing.reset();
    if (limited) {
        EXPECT_EQ(finishes_, 1) << "after a write error";
    }
}

// The device word picks the source, and the source's kind what options it
// takes (a PPK2's refusals, top rate and unopenable port end to end: e2e/
// session/ppk2_device.t, ppk2_session_test.py); each refusal is one line.
TEST(probe_choice, the_device_word_picks_the_source_and_its_limits) {
    struct row {
        const char* device;
        int32_t rate;
        const char* mode;
        int trig;
        const char* board_line;
        const char* error;  // Empty: a capture is made.
    };
    const row rows[] = {
        {"sim", 10'000'000, "ws+", 1, "", ""},
        {"ppk2:COM5", 1, "ws", 1, "trigger_input D7\n", "can't open the port 'COM5': "},
        {"ppk2:", 2000, "ws", 0, "", "unknown device 'ppk2:'; the probe simulator answers to"},
        {"PPK2", 2000, "ws", 0, "", "unknown device 'PPK2'"},
    };
    standin_test::scratch_dir dir;
    for (const row& r : rows) {
        SCOPED_TRACE(r.device);
        wattscope_options o{};
        o.sampfreq = r.rate, o.maxoutsize = 1024, o.output = dir.file("capture.csv");
        o.format = "csv", o.trace_mode = r.mode, o.device = r.device, o.range = "hi";
        o.trig = static_cast<uint8_t>(r.trig);
        o.config = dir.write("b.dat", standin_test::plain_board + std::string(r.board_line));
        std::string error;
        auto settings = standin::sim::check_capture_options(o, error);
        auto made = settings ? standin::sim::make_capture(std::move(*settings), error) : nullptr;
        EXPECT_EQ(made != nullptr, r.error[0] == 0);
        EXPECT_NE(error.find(r.error), std::string::npos) << error;
    }
    // A test's rate is the PPK2's too.
    const prodtest_options options{dir.write("limits.txt", "rate 200000\nmean_current 1 1 A\n"),
                                   dir.write("b.dat", standin_test::plain_board), "ppk2"};
    std::string error;
    EXPECT_EQ(standin::sim::make_production_test(options, error), nullptr);
    EXPECT_EQ(error, "rate 200000 is out of range for a PPK2; use 1 to 100000 samples per second");
}

}  // namespace
