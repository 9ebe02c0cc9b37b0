#include <gtest/gtest.h>
#if ZELNO_HAVE_EXPAT
#include <expat.h>
#endif

#include <regex>
#include <sstream>
#include <thread>

#include "engine/junit_report.h"
#include "engine/production_test.h"
#include "scratch_dir.h"

namespace {

class prodtest_test : public testing::Test {
  protected:
    std::unique_ptr<standin::sim::production_test> make(
        const std::string& limits, const std::string& board = standin_test::plain_board,
        bool valid = true) {
        const prodtest_options options{dir_.write("limits.txt", limits),
                                       dir_.write("plain.dat", board), "sim"};
        auto made = standin::sim::production_test::create(options, error_);
        EXPECT_EQ(made != nullptr, valid) << error_;
        return made;
    }
    int run(const std::string& limits) { return make(limits)->run(out_, errors_); }
    std::string report() const { return standin_test::read_file(dir_.file("limits.junit.xml")); }

    standin_test::scratch_dir dir_;
    std::ostringstream out_;
    std::ostringstream errors_;
    std::string error_;
};

// A mean of no samples reads 0: such a parameter must neither pass nor fail.
TEST_F(prodtest_test, parameters_without_a_sample_or_out_of_limits_keep_the_test_from_passing) {
    EXPECT_EQ(run("measure 1 ms\nsleep_current 0 1 A\nactive_current 2 1% mA\n"), 1);
    EXPECT_EQ(out_.str(),
              "prodtest: no sample of sleep_current in the 1 ms measured: ERROR\n"
              "prodtest: active_current 1.000 mA, expected 2 mA +/- 1%: FAIL\n"
              "prodtest: ERROR, 1 of 2 parameters without a sample, 1 out of limits (report " +
                  dir_.file("limits.junit.xml") + ")\n");
    EXPECT_NE(report().find("failures=\"1\" errors=\"1\""), std::string::npos);
    EXPECT_NE(report().find("<error message=\"no sample of sleep_current in the 1 ms measured\"/>"),
              std::string::npos);
    EXPECT_NE(report().find("<failure message=\"measured 1.000 mA, expected 2 mA +/- 1% (1.98 to "
                            "2.02 mA)\" type=\"out of limits\"/>"),
              std::string::npos);
    out_.str("");
    std::filesystem::remove(dir_.file("limits.junit.xml"));
    std::filesystem::create_directory(dir_.file("limits.junit.xml"));  // In the report's way.
    EXPECT_EQ(run("measure 1 us\npeak_current 0 1 A\n"), -1);
    EXPECT_EQ(out_.str().find("no sample of peak_current in the 1 us measured"), 10u);
    EXPECT_NE(errors_.str().find("cannot write " + dir_.file("limits.junit.xml")),
              std::string::npos);
}

// Clipped readings make a wrong figure; the test must say so, and which range holds them.
TEST_F(prodtest_test, clipped_parameters_are_errors_that_name_the_range_that_holds_them) {
    const std::string burst =
        std::regex_replace(standin_test::plain_board, std::regex("busy 1000000"), "busy 80000000");
    const std::string limits = "measure 50 ms\nactive_current 80 1% mA\nsupply_voltage 2 0.1% V\n";
    EXPECT_EQ(make(limits, burst)->run(out_, errors_), 1);
    EXPECT_EQ(out_.str(),
              "prodtest: active_current clipped in 100 of 100 samples beyond 50 mA (range hi holds "
              "them: add the line 'range hi' to " +
                  dir_.file("limits.txt") +
                  "): ERROR\nprodtest: supply_voltage 2.000 V, expected 2 V +/- 0.1%: PASS\n"
                  "prodtest: ERROR, 1 of 2 parameters clipped (report " +
                  dir_.file("limits.junit.xml") + ")\n");
    out_.str("");
    EXPECT_EQ(
        make("range hi\nreport " + dir_.file("r.xml") + "\n" + limits, burst)->run(out_, errors_),
        0)
        << out_.str();
    // Each case carries its value and limits, where CI tools show them.
    const std::string xml = standin_test::read_file(dir_.file("r.xml"));
    EXPECT_NE(xml.find("<property name=\"measured\" value=\"80\"/>"), std::string::npos) << xml;
    EXPECT_NE(xml.find("<property name=\"upper_limit\" value=\"80.8\"/>"), std::string::npos);
    EXPECT_NE(xml.find("<system-out>measured 80.00 mA, expected 80 mA +/- 1% (79.2 to 80.8 "
                       "mA)</system-out>"),
              std::string::npos);
}

// The report goes where the description says, never over the description or
// the board, and a full disk or file size limit fails it cleanly.
TEST_F(prodtest_test, the_report_goes_where_it_is_told_and_fails_cleanly) {
    EXPECT_EQ(standin::sim::report_path("d.x/.hidden", ""), "d.x/.hidden.junit.xml");
    EXPECT_EQ(standin::sim::report_path("d.x/limits", ""), "d.x/limits.junit.xml");
    EXPECT_EQ(standin::sim::report_path("d.x\\.hidden", ""), "d.x\\.hidden.junit.xml");
    const std::string input =
        dir_.write("limits.txt", "report " + dir_.file("limits.txt") + "\npeak_current 1 1 A\n");
    prodtest_options options;
    options.input = input;
    options.config = dir_.write("plain.dat", standin_test::plain_board);
    options.device = "sim";
    EXPECT_EQ(standin::sim::production_test::create(options, error_), nullptr);
    EXPECT_EQ(error_, input + ":1: the report " + input + " is the test description");
    const std::string pipe = standin_test::make_pipe(dir_);  // Its rename would replace it.
    EXPECT_EQ(make("report " + pipe + "\npeak_current 1 1 A\n", standin_test::plain_board, false),
              nullptr);
    EXPECT_EQ(error_,
              dir_.file("limits.txt") + ":1: the report " + pipe + " is not a regular file");
    std::error_code ignored;  // A Windows pipe goes with its handles.
    std::filesystem::remove(pipe, ignored);
    auto test = make("measure 1 ms\npeak_current 1 1 A\n");
    if (!standin_test::with_file_size_limit(100,
                                            [&] { EXPECT_EQ(test->run(out_, errors_), -1); })) {
        GTEST_SKIP() << "Windows has no file size limit to make a write fail; the code is shared";
    }
    EXPECT_EQ(errors_.str(),
              "prodtest: cannot write " + dir_.file("limits.junit.xml") + ": File too large\n");
    EXPECT_EQ(dir_.count(), 2);  // No report, and no temporary file left.
}

TEST_F(prodtest_test, a_stop_gives_no_verdict_and_reports_errors) {
    auto test = make("measure 1 s\nmean_current 0.28 1% mA\n");
    int result = 0;
    std::thread runner([&] { result = test->run(out_, errors_); });
    test->stop();
    runner.join();
    EXPECT_EQ(result, -1);
    EXPECT_NE(out_.str().find("; no verdict"), std::string::npos) << out_.str();
    EXPECT_NE(report().find("<error message=\"stopped before the measurement ended\"/>"),
              std::string::npos);
}

TEST(test_description, malformed_files_are_refused_with_file_and_line) {
    const std::pair<std::string, std::string> cases[] = {
        {"# nothing\n", "1: no parameter to test; parameters are supply_voltage, mean_current"},
        {"measure 1 s\nvoltage 3 1% V\n", "2: unknown parameter 'voltage'"},
        {"mean_current 3 1% V\n", "1: mean_current is measured in A, mA, uA or nA, not 'V'"},
        {"mean_current 3 -0 A\n", "1: the tolerance '-0' is no number of 0 or more"},
        {"mean_current 3 -0% A\n", "1: the tolerance '-0%' is no number of 0 or more"}};
    for (const auto& [content, message] : cases) {
        try {
            standin::sim::parse_test_description(content, "l.txt");
            ADD_FAILURE() << "accepted: " << message;
        } catch (const std::exception& e) {
            EXPECT_EQ(std::string(e.what()).rfind("l.txt:" + message, 0), 0u) << e.what();
        }
    }
}

#if ZELNO_HAVE_EXPAT  // Debian has no MinGW build of expat; the report's code is the same.
// Names are bytes from the file system: whatever they hold, an XML parser
// must accept the report and give back every character that XML can hold.
TEST(junit_report, is_well_formed_xml_whatever_the_names_hold) {
    const std::string good = "a&b<c>\"d\t\n\r\x7f\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80";
    // A control character, a stray byte, an overlong '/', a surrogate, U+FFFE, a cut sequence.
    const std::string bad = "\x01\xff\xc0\xaf\xed\xa0\x80\xef\xbf\xbe\xe2\x82";
    const std::string xml = standin::sim::junit_xml(
        {good + bad, "t", "b", 1, {{"p", "", "e", {{"k", good + bad}}, good + bad}}});
    XML_Parser parser = XML_ParserCreate(nullptr);
    std::string suite;
    XML_SetUserData(parser, &suite);
    XML_SetStartElementHandler(
        parser, [](void* data, const XML_Char* element, const XML_Char** at) {
            if (std::string(element) == "testsuite") {
                *static_cast<std::string*>(data) = at[1];  // Its first attribute is the name.
            }
        });
    EXPECT_EQ(XML_Parse(parser, xml.data(), static_cast<int>(xml.size()), 1), XML_STATUS_OK)
        << XML_ErrorString(XML_GetErrorCode(parser)) << xml;
    XML_ParserFree(parser);
    std::string replaced = good;
    for (size_t i = 0; i < bad.size(); ++i) {
        replaced += "\xef\xbf\xbd";
    }
    EXPECT_EQ(suite, replaced);
}
#endif

}  // namespace
