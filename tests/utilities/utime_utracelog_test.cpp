#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "scratch_dir.h"
#include "utilities/udll.h"
#include "utilities/utime.h"
#include "utilities/utrace_registry.h"
#include "utilities/utracelog.h"

namespace {

namespace fs = std::filesystem;
using VX_UTL::uTime;

// Wednesday 1 March 2023, 09:05:03 and `millisecond`.
uTime::snapshot_t fixed_moment(int32_t millisecond) {
    return {2023, 3, 1, 9, 5, 3, millisecond, 0, 3};
}

// Buffers here are of exactly `size` bytes, so that a write beyond them shows
// under the address sanitizer.
TEST(utime, format_renders_the_snapshot_into_the_buffer) {
    // clang-format off
    const struct { const char* format; int32_t millisecond, size; const char* expected; } rows[] = {
        {"%H:%M:%S:%s | ", 7, 64, "09:05:03:007 | "}, {"%#s.%#s", 0, 64, "0.0"},
        {"%m/%d/%y %H:%M:%S:%s", 999, 64, "03/01/23 09:05:03:999"}, {"%#s.%s", 45, 64, "45.045"},
        {"%j %a", 7, 64, "060 Wed"}, {"%H:%M", 7, 4, "09:"},  // The format is cut to the buffer.
        {"%s", 7, 4, "007"}, {"%s", 7, 3, ""},  // No room: %s must not reach strftime.
        {"%Y%m", 7, 5, ""}, {"%H", 7, 1, ""}};  // The rendering doesn't fit.
    // clang-format on
    const uTime time;  // Takes the clock; the fixed moments replace it.
    for (const auto& r : rows) {
        uTime::set_snapshot(fixed_moment(r.millisecond));
        std::vector<char> buffer(static_cast<std::size_t>(r.size), '#');
        ASSERT_EQ(time.format(buffer.data(), r.size, r.format), buffer.data()) << r.format;
        EXPECT_STREQ(buffer.data(), r.expected) << r.format << " in " << r.size;
    }
}

// States 1 (no snapshot) and 2 (null results) can't be reached once an
// object exists, but for the test seam; a new snapshot puts state 0 back.
TEST(utime, format_reads_the_latest_snapshot_of_any_object) {
    const uTime time;
    char buffer[16] = "keep";
    EXPECT_EQ(time.format(buffer, 0, "%H"), nullptr);
    EXPECT_EQ(time.format(buffer, 8, nullptr), nullptr);
    EXPECT_EQ(time.format(nullptr, 8, "%H"), nullptr);
    uTime::set_time_state(2);
    EXPECT_EQ(time.format(buffer, sizeof buffer, "%H"), nullptr);
    EXPECT_STREQ(buffer, "keep");
    uTime::set_time_state(1);
    EXPECT_STREQ(time.format(buffer, sizeof buffer, "%H"), "Invalid time");
    EXPECT_STREQ(time.format(buffer, 8, "%H"), "Invalid");
    uTime::set_snapshot(fixed_moment(7));
    const uTime later;  // Takes the clock again, for every object.
    EXPECT_STRNE(time.format(buffer, sizeof buffer, "%Y %H:%M:%S"), "2023 09:05:03");
}

TEST(utime, day_of_year_counts_every_fourth_year_as_leap) {
    const int32_t rows[][4] = {{2023, 3, 1, 59},    {2024, 3, 1, 60}, {2100, 3, 1, 60},
                               {2024, 12, 31, 365}, {2023, 0, 15, 0}, {2023, 13, 1, 0}};
    for (const auto& r : rows) {
        EXPECT_EQ(uTime::day_of_year(r[0], r[1], r[2]), r[3]) << r[0] << "-" << r[1] << "-" << r[2];
    }
}

TEST(utime, replace_text_all_or_nothing_and_find_text) {
    // clang-format off
    const struct { const char* text; int32_t size; const char *needle, *replacement, *expected;
                   int32_t count; } rows[] = {
        {"a%sb%sc", 16, "%s", "007", "a007b007c", 2}, {"x%#sy", 8, "%#s", "7", "x7y", 1},
        {"%s%s", 8, "%s", "", "", 2}, {"ab", 8, "%s", "007", "ab", 0}, {"ab", 8, "", "x", "ab", 0},
        {"%s", 4, "%s", "007", "007", 1}, {"%s", 3, "%s", "007", "%s", 0},  // Fits, then one short.
        {"%s-%s", 7, "%s", "007", "%s-%s", 0}};
    // clang-format on
    for (const auto& r : rows) {
        std::vector<char> buffer(static_cast<std::size_t>(r.size), '#');
        std::memcpy(buffer.data(), r.text, std::strlen(r.text) + 1);
        EXPECT_EQ(uTime::replace_text(buffer.data(), r.size, r.needle, r.replacement), r.count)
            << r.text;
        EXPECT_STREQ(buffer.data(), r.expected);
    }
    // At the length the rest is empty; beyond it, or before 0, no search.
    EXPECT_EQ(uTime::find_text("abcabc", "bc", 2), 4);
    EXPECT_EQ(uTime::find_text("abc", "", 3), 3);
    EXPECT_EQ(uTime::find_text("abc", "", 4), -1);
    EXPECT_EQ(uTime::find_text("abc", "a", -1), -1);
}

// Every digit as 9, so that time stamps compare exactly.
std::string masked(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; }, '9');
    return text;
}

std::string read(const fs::path& file) {
    return masked(standin_test::read_file(file.string()));
}

// Every line is echoed; the file is tried at each line until it opens, then
// emptied or kept. The level stays 0 in zelno; raised here, a failed library
// load reaches the installed log.
TEST(trace_log, lines_by_flags_stamp_and_line_end_to_stdout_and_file) {
    const standin_test::scratch_dir directory;
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
    VX_UTL::uTraceRegistry& registry = VX_UTL::get_trace_registry();
    for (const bool append : {true, false}) {
        const fs::path file = directory.file(append ? "append/trace.log" : "truncate/trace.log");
        std::string lines;
        {
            VX_UTL::uTraceLog log(file.string(), true, true, true, append, 1);
            testing::internal::CaptureStdout();
            log.write(1, 0, "lost");
            fs::create_directory(file.parent_path());
            std::ofstream(file, std::ios::binary) << "old\n";
            for (const auto& r : rows) {
                log.write(r.mask, r.mode, "%s", r.message.c_str());
                lines += r.line.empty() ? "" : r.line + "\n";
            }
            registry.trace_log = &log;
            registry.trace_level = 1;
            VX_UTL::uDll library(nullptr, -1);
            EXPECT_FALSE(library.load("libzelno_no_such_library.so", -1));
            registry.trace_log = nullptr;
            registry.trace_level = 0;
            lines += masked("M     00:00:00:000 | uDll: " + library.last_error() + "\n");
        }
        EXPECT_EQ(masked(testing::internal::GetCapturedStdout()), "M      lost\n" + lines);
        EXPECT_EQ(read(file), (append ? "old\n" : "") + lines);
    }
}

TEST(trace_log, lines_of_two_threads_never_mix) {
    const standin_test::scratch_dir directory;
    {
        VX_UTL::uTraceLog log(directory.file("threads.log"), true, false, false, false, 1);
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
    std::istringstream text(read(directory.file("threads.log")));
    int count = 0;
    for (std::string line; std::getline(text, line); ++count) {
        ASSERT_EQ(line, "M     99:99:99:999 | " + std::string(200, line[line.size() / 2]));
    }
    EXPECT_EQ(count, 600);
}

}  // namespace
