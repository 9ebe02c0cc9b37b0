#include <gtest/gtest.h>
#include <sys/stat.h>

#include <sstream>
#include <thread>

#include "common/text_input.h"
#include "scratch_dir.h"
#include "wattscope_sim/junit_report.h"
#include "wattscope_sim/production_test.h"

namespace {

using standin::sim::production_test;
using standin::sim::test_parameter;
using standin_test::read_file;

// The plain board measured for 20 ms (two cycles) at 10000 samples/s.
const std::string passing =
    "measure 20 ms\n"
    "rate 10000\n"
    "supply_voltage 2 0.1% V\n"
    "mean_current 0.28 1% mA\n"
    "sleep_current 100 0.5 uA\n"
    "active_current 1 1% mA\n"
    "peak_current 1 1% mA\n"
    "mean_power 560 1% uW\n"
    "cycle_energy 5.6 0.01 uJ\n";

class prodtest_test : public testing::Test {
  protected:
    prodtest_test() {
        options_.config = dir_.write("plain.dat", standin_test::plain_board);
        options_.device = "unused";
    }

    std::unique_ptr<production_test> make(const std::string& limits, std::string* error = nullptr) {
        options_.input = dir_.write("limits.txt", limits);
        std::string message;
        auto made = production_test::create(options_, message);
        if (error != nullptr) {
            *error = message;
        }
        return made;
    }

    int run(production_test& test) { return test.run(out_, errors_); }

    standin_test::scratch_dir dir_;
    prodtest_options options_;
    std::ostringstream out_;
    std::ostringstream errors_;
};

TEST_F(prodtest_test, measures_the_board_and_passes_within_limits) {
    auto test = make(passing);
    ASSERT_NE(test, nullptr);
    ASSERT_EQ(run(*test), 0);
    const auto& m = test->measurement();
    EXPECT_DOUBLE_EQ(m.supply_voltage, 2.0);
    EXPECT_NEAR(m.mean_current, 0.28e-3, 1e-12);
    EXPECT_NEAR(m.sleep_current, 0.1e-3, 1e-12);
    EXPECT_NEAR(m.active_current, 1e-3, 1e-12);
    EXPECT_NEAR(m.cycle_energy, 5.6e-6, 1e-12);
    EXPECT_EQ(out_.str(),
              "prodtest: supply_voltage 2.000 V, expected 2 V +/- 0.1%: PASS\n"
              "prodtest: mean_current 0.2800 mA, expected 0.28 mA +/- 1%: PASS\n"
              "prodtest: sleep_current 100.0 uA, expected 100 uA +/- 0.5 uA: PASS\n"
              "prodtest: active_current 1.000 mA, expected 1 mA +/- 1%: PASS\n"
              "prodtest: peak_current 1.000 mA, expected 1 mA +/- 1%: PASS\n"
              "prodtest: mean_power 560.0 uW, expected 560 uW +/- 1%: PASS\n"
              "prodtest: cycle_energy 5.600 uJ, expected 5.6 uJ +/- 0.01 uJ: PASS\n"
              "prodtest: PASS, 7 of 7 parameters within limits (report " +
                  dir_.file("limits.junit.xml") + ")\n");
    const std::string report = read_file(dir_.file("limits.junit.xml"));
    EXPECT_NE(report.find("<testsuite name=\"limits.txt\" tests=\"7\" failures=\"0\" errors=\"0\" "
                          "time=\"0.020\">"),
              std::string::npos)
        << report;
    EXPECT_NE(report.find(
                  "<testcase classname=\"prodtest.plain\" name=\"cycle_energy\" time=\"0.020\"/>"),
              std::string::npos);
}

TEST_F(prodtest_test, a_parameter_out_of_limits_fails_the_test) {
    auto test = make("measure 10 ms\nmean_current 0.3 5% mA\nsupply_voltage 2 0 V\n");
    ASSERT_EQ(run(*test), 1);
    EXPECT_NE(out_.str().find("prodtest: mean_current 0.2800 mA, expected 0.3 mA +/- 5%: FAIL\n"),
              std::string::npos);
    EXPECT_NE(out_.str().find("prodtest: FAIL, 1 of 2 parameters out of limits"),
              std::string::npos);
    const std::string report = read_file(dir_.file("limits.junit.xml"));
    EXPECT_NE(report.find("failures=\"1\""), std::string::npos);
    EXPECT_NE(report.find("<failure message=\"measured 0.2800 mA\" type=\"out of limits\"/>"),
              std::string::npos)
        << report;
}

TEST_F(prodtest_test, a_stop_gives_no_verdict_and_reports_errors) {
    auto test = make("measure 1 s\nmean_current 0.28 1% mA\n");
    int result = 0;
    std::thread runner([&] { result = run(*test); });
    test->stop();
    runner.join();
    test->stop();
    EXPECT_EQ(result, -1);
    EXPECT_NE(out_.str().find("; no verdict"), std::string::npos) << out_.str();
    EXPECT_EQ(out_.str().find("PASS"), std::string::npos);
    const std::string report = read_file(dir_.file("limits.junit.xml"));
    EXPECT_NE(report.find("errors=\"1\""), std::string::npos);
    EXPECT_NE(report.find("<error message=\"stopped before the measurement ended\"/>"),
              std::string::npos);
}

TEST_F(prodtest_test, an_unwritable_report_is_an_error) {
    auto test = make("measure 1 ms\nmean_current 0.28 1% mA\n");
    ::mkdir(dir_.file("limits.junit.xml").c_str(), 0755);  // A directory is in the way.
    EXPECT_EQ(run(*test), -1);
    EXPECT_NE(errors_.str().find("prodtest: cannot write " + dir_.file("limits.junit.xml")),
              std::string::npos);
}

struct malformed_case {
    const char* name;
    const char* content;
    const char* message;  // Behind "<file>:".
};

class malformed_descriptions : public prodtest_test,
                               public testing::WithParamInterface<malformed_case> {};

TEST_P(malformed_descriptions, make_no_test_and_name_file_and_line) {
    std::string error;
    EXPECT_EQ(make(GetParam().content, &error), nullptr);
    EXPECT_EQ(error, dir_.file("limits.txt") + ":" + GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    table, malformed_descriptions,
    testing::Values(
        malformed_case{"empty", "# nothing\n",
                       "1: no parameter to test; parameters are supply_voltage, mean_current, "
                       "sleep_current, active_current, peak_current, mean_power, cycle_energy"},
        malformed_case{
            "unknown", "measure 1 s\nvoltage 3 1% V\n",
            "2: unknown parameter 'voltage'; parameters are supply_voltage, mean_current, "
            "sleep_current, active_current, peak_current, mean_power, cycle_energy, and "
            "the lines 'measure' and 'rate'"},
        malformed_case{"wrong_unit", "mean_current 3 1% V\n",
                       "1: mean_current is measured in A, mA, uA or nA, not 'V'"},
        malformed_case{"short", "mean_current 3 mA\n",
                       "1: expected '<parameter> <expected value> <tolerance> <unit>', such as "
                       "'mean_current 2.5 10% mA'"},
        malformed_case{"expected", "mean_current three 1% mA\n",
                       "1: the expected value 'three' is no number"},
        malformed_case{"tolerance", "mean_current 3 -1 mA\n",
                       "1: the tolerance '-1' is no number of 0 or more, with or without '%'"},
        malformed_case{"twice", "mean_current 3 1 mA\nmean_current 3 1 mA\n",
                       "2: mean_current is given twice"},
        malformed_case{"measure", "measure forever\n",
                       "1: expected 'measure <time>' from 1 us to 1 hour, such as 'measure 2 s'"},
        malformed_case{"measure_long", "measure 2 h\n",
                       "1: expected 'measure <time>' from 1 us to 1 hour, such as 'measure 2 s'"},
        malformed_case{"rate", "rate 0\n",
                       "1: expected 'rate <samples per second>' from 1 to 1000000"}),
    [](const testing::TestParamInfo<malformed_case>& param_info) { return param_info.param.name; });

TEST_F(prodtest_test, a_missing_description_or_board_makes_no_test) {
    options_.input = dir_.file("none.txt");
    std::string error;
    EXPECT_EQ(production_test::create(options_, error), nullptr);
    EXPECT_EQ(error, "cannot read " + dir_.file("none.txt") + ": No such file or directory");
    EXPECT_EQ(make(passing, &error) == nullptr, false);
    options_.device = "other";
    EXPECT_EQ(make(passing, &error), nullptr);
    EXPECT_EQ(error, "unknown device 'other'; the probe simulator answers to 'unused' and 'sim'");
}

TEST(junit_report, sits_beside_the_description) {
    EXPECT_EQ(standin::sim::report_path("limits.txt"), "limits.junit.xml");
    EXPECT_EQ(standin::sim::report_path("a.b/limits"), "a.b/limits.junit.xml");
    EXPECT_EQ(standin::sim::report_path("dir/.limits"), "dir/.limits.junit.xml");
    EXPECT_EQ(standin::sim::report_path("x.y.txt"), "x.y.junit.xml");
}

TEST(junit_report, escapes_what_it_quotes) {
    const std::string xml =
        standin::sim::junit_xml({"a&b.txt", "t<1>", "b\"d", 1.5, {{"p", "x < y", ""}}});
    EXPECT_NE(xml.find("name=\"a&amp;b.txt\""), std::string::npos);
    EXPECT_NE(xml.find("value=\"t&lt;1&gt;\""), std::string::npos);
    EXPECT_NE(xml.find("value=\"b&quot;d\""), std::string::npos);
    EXPECT_NE(xml.find("<failure message=\"x &lt; y\""), std::string::npos);
}

}  // namespace
