#include "utilities/utime.h"

#include <gtest/gtest.h>

#include <cstring>
#include <regex>
#include <string>
#include <vector>

namespace {

using VX_UTL::uTime;

// Wednesday 1 March 2023, 09:05:03.007.
uTime::snapshot_t fixed_moment(int32_t millisecond = 7) {
    uTime::snapshot_t moment{};
    moment.year = 2023;
    moment.month = 3;
    moment.day = 1;
    moment.hour = 9;
    moment.minute = 5;
    moment.second = 3;
    moment.millisecond = millisecond;
    moment.day_of_week = 3;
    return moment;
}

// Formats `moment` into a buffer of exactly `size` bytes, so that a write
// beyond it shows under the address sanitizer.
std::string formatted(const uTime::snapshot_t& moment, const char* format_text, int32_t size = 64) {
    const uTime time;  // Takes the clock; the fixed moment replaces it.
    uTime::set_snapshot(moment);
    std::vector<char> buffer(static_cast<std::size_t>(size), '#');
    const char* result = time.format(buffer.data(), size, format_text);
    EXPECT_EQ(result, buffer.data()) << format_text;
    return result != nullptr ? result : "(null)";
}

struct format_case {
    const char* format_text;
    int32_t millisecond;
    int32_t size;
    const char* expected;
};

class format_cases : public testing::TestWithParam<format_case> {};

TEST_P(format_cases, render_the_snapshot) {
    const format_case& c = GetParam();
    EXPECT_EQ(formatted(fixed_moment(c.millisecond), c.format_text, c.size), c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    table, format_cases,
    testing::Values(format_case{"%H:%M:%S:%s | ", 7, 64, "09:05:03:007 | "},
                    format_case{"%m/%d/%y | ", 7, 64, "03/01/23 | "},
                    format_case{"%m/%d/%y %H:%M:%S:%s | ", 999, 64, "03/01/23 09:05:03:999 | "},
                    format_case{"%#s", 7, 64, "7"}, format_case{"%#s", 0, 64, "0"},
                    format_case{"%#s.%s", 45, 64, "45.045"},
                    format_case{"%s and %s", 120, 64, "120 and 120"},
                    format_case{"no placeholder %a", 7, 64, "no placeholder Wed"},
                    // The format is cut to the buffer before rendering.
                    format_case{"%H:%M", 7, 4, "09:"},
                    // Exactly room for the digits and the terminator.
                    format_case{"%s", 7, 4, "007"},
                    // No room for the digits: the placeholder must not reach
                    // strftime.
                    format_case{"%s", 7, 3, ""},
                    // A rendering longer than the buffer.
                    format_case{"%Y%m", 7, 5, ""}, format_case{"%H", 7, 1, ""}));

struct day_case {
    int32_t year;
    int32_t month;
    int32_t day;
    int32_t day_of_year;
};

class day_of_year_cases : public testing::TestWithParam<day_case> {};

TEST_P(day_of_year_cases, count_every_fourth_year_as_leap) {
    const day_case& c = GetParam();
    EXPECT_EQ(uTime::day_of_year(c.year, c.month, c.day), c.day_of_year)
        << c.year << "-" << c.month << "-" << c.day;
}

INSTANTIATE_TEST_SUITE_P(table, day_of_year_cases,
                         testing::Values(day_case{2023, 1, 1, 0}, day_case{2024, 1, 1, 0},
                                         day_case{2023, 3, 1, 59}, day_case{2024, 3, 1, 60},
                                         day_case{2100, 3, 1, 60}, day_case{2000, 3, 1, 60},
                                         day_case{2023, 12, 31, 364}, day_case{2024, 12, 31, 365},
                                         day_case{2023, 0, 15, 0}, day_case{2023, 13, 1, 0}));

TEST(utime_format, reads_the_worked_out_day_of_the_year) {
    uTime::snapshot_t moment = fixed_moment();
    moment.year = 2100;
    moment.day_of_year = -1;  // Worked out on recording, whatever is given.
    EXPECT_EQ(formatted(moment, "%j"), "061");
}

// States 1 and 2 can't be reached once an object exists, but for the test
// seam; state 0 is put back at the end.
TEST(utime_format, null_results_and_states_without_a_snapshot) {
    const uTime time;
    char buffer[16] = "keep";
    EXPECT_EQ(time.format(buffer, 0, "%H"), nullptr);
    EXPECT_EQ(time.format(buffer, -1, "%H"), nullptr);
    EXPECT_EQ(time.format(nullptr, 8, "%H"), nullptr);

    uTime::set_time_state(2);
    EXPECT_EQ(time.format(buffer, sizeof buffer, "%H"), nullptr);
    EXPECT_STREQ(buffer, "keep");

    uTime::set_time_state(1);
    EXPECT_STREQ(time.format(buffer, sizeof buffer, "%H"), "Invalid time");
    EXPECT_STREQ(time.format(buffer, 8, "%H"), "Invalid");
    EXPECT_STREQ(time.format(buffer, 1, "%H"), "");

    uTime::set_snapshot(fixed_moment());
    EXPECT_STREQ(time.format(buffer, sizeof buffer, "%H"), "09");
}

TEST(utime_format, every_object_formats_the_latest_snapshot) {
    const uTime earlier;
    uTime::set_snapshot(fixed_moment());
    const uTime later;  // Takes the clock again, for both objects.
    char first[32];
    char second[32];
    earlier.format(first, sizeof first, "%Y %H:%M:%S:%s");
    later.format(second, sizeof second, "%Y %H:%M:%S:%s");
    EXPECT_STREQ(first, second);
    EXPECT_TRUE(std::regex_match(first, std::regex(R"(\d{4} \d\d:\d\d:\d\d:\d{3})"))) << first;
    EXPECT_STRNE(first, "2023 09:05:03:007");
}

struct replace_case {
    const char* text;
    int32_t size;
    const char* needle;
    const char* replacement;
    const char* expected;
    int32_t count;
};

class replace_text_cases : public testing::TestWithParam<replace_case> {};

TEST_P(replace_text_cases, replace_all_or_nothing_in_place) {
    const replace_case& c = GetParam();
    // Exactly `size` bytes, the bytes behind the text marked.
    std::vector<char> buffer(static_cast<std::size_t>(c.size), '#');
    std::memcpy(buffer.data(), c.text, std::strlen(c.text) + 1);
    EXPECT_EQ(uTime::replace_text(buffer.data(), c.size, c.needle, c.replacement), c.count);
    EXPECT_STREQ(buffer.data(), c.expected);
}

INSTANTIATE_TEST_SUITE_P(table, replace_text_cases,
                         testing::Values(replace_case{"a%sb%sc", 16, "%s", "007", "a007b007c", 2},
                                         replace_case{"x%sy", 8, "%s", "ab", "xaby", 1},
                                         replace_case{"x%#sy%#sz", 16, "%#s", "7", "x7y7z", 2},
                                         replace_case{"%s%s", 8, "%s", "", "", 2},
                                         replace_case{"abc", 8, "%s", "007", "abc", 0},
                                         // Exactly fits, then one byte short: nothing changes.
                                         replace_case{"%s", 4, "%s", "007", "007", 1},
                                         replace_case{"%s", 3, "%s", "007", "%s", 0},
                                         replace_case{"%s-%s", 7, "%s", "007", "%s-%s", 0},
                                         replace_case{"abc", 8, "", "x", "abc", 0}));

struct find_case {
    const char* text;
    const char* needle;
    int32_t start;
    int32_t expected;
};

class find_text_cases : public testing::TestWithParam<find_case> {};

TEST_P(find_text_cases, find_from_the_start_index) {
    const find_case& c = GetParam();
    EXPECT_EQ(uTime::find_text(c.text, c.needle, c.start), c.expected)
        << c.text << " / " << c.needle << " / " << c.start;
}

INSTANTIATE_TEST_SUITE_P(table, find_text_cases,
                         testing::Values(find_case{"abcabc", "bc", 0, 1},
                                         find_case{"abcabc", "bc", 2, 4},
                                         find_case{"abc", "x", 0, -1},
                                         // At the length the rest is empty; beyond it, no search.
                                         find_case{"abc", "c", 3, -1}, find_case{"abc", "", 3, 3},
                                         find_case{"abc", "", 4, -1},
                                         find_case{"abc", "a", -1, -1}));

}  // namespace
