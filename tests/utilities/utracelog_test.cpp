#include "utilities/utracelog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <thread>

#include "utilities/udll.h"
#include "utilities/utrace_registry.h"

namespace {

namespace fs = std::filesystem;
using VX_UTL::uTraceLog;

// The file with every digit as 9, so that time stamps compare exactly.
std::string read(const fs::path& file) {
    std::stringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    std::string result = text.str();
    std::replace_if(
        result.begin(), result.end(), [](char c) { return c >= '0' && c <= '9'; }, '9');
    return result;
}

// A directory of its own, also apart from builds that test at the same time.
class trace_log_test : public testing::Test {
  protected:
    void SetUp() override { fs::create_directories(directory); }
    void TearDown() override { fs::remove_all(directory); }
    const fs::path directory =
        fs::temp_directory_path() / ("zelno_trace_" + std::to_string(std::random_device{}()));
};

TEST_F(trace_log_test, flags_time_stamp_and_one_line_end_per_line) {
    const std::string long_text(5000, 'x');  // Beyond the first size of the buffer.
    // An empty line: nothing is written.
    // clang-format off
    const struct { uint32_t mask, mode; std::string message, line; } rows[] = {
        {3, 0, "a", "MW     a"},  {16, 0, "a", "    E  a"},  {31, 0, "a", "MWFAE  a"},
        {32, 0, "a", "       a"}, {0, 0, "a", ""},           {65, 0, "a", "M      a"},
        {1, 1, "a", "M     99/99/99 | a"},    {1, 2, "a", "M     99:99:99:999 | a"},
        {1, 3, "a", "M     99/99/99 99:99:99:999 | a"},       {1, 9, "a", "M      a"},
        {1, 0, "a\n", "M      a"},   {1, 0, "a\r\n", "M      a"},     {1, 0, "a\n\r", "M      a"},
        {1, 0, "a\r", "M      a"},   {1, 0, "a\n\n", "M      a\n"},   {1, 0, "a\r\r", "M      a\r"},
        {1, 0, "a\r\n\n", "M      a\r\n"},                      {1, 0, "\n", "M      "},
        {1, 0, long_text + "\r\n", "M      " + long_text},      {1, 0, "b", "M      b"}};
    // clang-format on
    std::string expected;
    {
        uTraceLog log((directory / "lines.log").string(), true, false, false, false, 1);
        for (const auto& r : rows) {
            log.write(r.mask, r.mode, "%s", r.message.c_str());
            expected += r.line.empty() ? "" : r.line + "\n";
        }
    }
    EXPECT_EQ(read(directory / "lines.log"), expected);
}

// Each line is echoed, whether or not the file opens; once it opens, it is
// emptied or kept, and stays open.
TEST_F(trace_log_test, the_file_opens_at_the_first_line_that_can_open_it) {
    for (const bool append : {true, false}) {
        const fs::path file = directory / (append ? "append" : "truncate") / "trace.log";
        uTraceLog log(file.string(), true, true, true, append, 1);
        testing::internal::CaptureStdout();
        log.write(1, 0, "lost");
        fs::create_directory(file.parent_path());
        std::ofstream(file) << "old\n";
        log.write(1, 0, "one");
        log.write(1, 0, "two");
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "M      lost\nM      one\nM      two\n");
        EXPECT_EQ(read(file), (append ? "old\n" : "") + std::string("M      one\nM      two\n"));
    }
}

TEST_F(trace_log_test, lines_of_two_threads_never_mix) {
    {
        uTraceLog log((directory / "threads.log").string(), true, false, false, false, 1);
        auto writer = [&log](char letter) {
            for (int i = 0; i < 300; ++i) {
                log.write(1, 2, "%s", std::string(200, letter).c_str());
            }
        };
        std::thread first(writer, 'a');
        std::thread second(writer, 'b');
        first.join();
        second.join();
    }
    std::istringstream text(read(directory / "threads.log"));
    const std::string stamp = "M     99:99:99:999 | ";
    int count = 0;
    for (std::string line; std::getline(text, line); ++count) {
        ASSERT_TRUE(line == stamp + std::string(200, 'a') || line == stamp + std::string(200, 'b'))
            << line;
    }
    EXPECT_EQ(count, 600);
}

// The level stays 0 in zelno, where a write would find no log; raised here,
// a failed library load reaches the installed log.
TEST_F(trace_log_test, a_failed_load_reaches_the_installed_log) {
    VX_UTL::uTraceRegistry& registry = VX_UTL::get_trace_registry();
    {
        uTraceLog log((directory / "udll.log").string(), true, false, false, false, 1);
        registry.trace_log = &log;
        registry.trace_level = 1;
        EXPECT_FALSE(VX_UTL::uDll(nullptr, -1).load("libzelno_no_such_library.so", -1));
        registry.trace_log = nullptr;
        registry.trace_level = 0;
    }
    EXPECT_EQ(read(directory / "udll.log")
                  .rfind("M     99:99:99:999 | uDll: failed to load libzelno_no", 0),
              0u);
}

}  // namespace
