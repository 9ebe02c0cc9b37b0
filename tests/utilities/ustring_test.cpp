#include "utilities/ustring.h"

#include <gtest/gtest.h>

namespace {

using VX_UTL::uString;

struct replace_case {
    const char* text;
    const char* from;
    const char* to;
    const char* result;
};

class replace_cases : public testing::TestWithParam<replace_case> {};

TEST_P(replace_cases, gives_the_text) {
    const replace_case& c = GetParam();
    std::string text = c.text;
    EXPECT_STREQ(uString::replace(text, c.from, c.to), c.result);
    EXPECT_EQ(text, c.result);
}

INSTANTIATE_TEST_SUITE_P(table, replace_cases,
                         testing::Values(replace_case{"abc", "x", "y", "abc"},
                                         replace_case{"", "x", "y", ""},
                                         replace_case{"ab", "abc", "y", "ab"},
                                         replace_case{"a/b/c", "/", "\\", "a\\b\\c"},
                                         replace_case{"abXabab", "ab", "", "Xab"},
                                         // Shorter `to`: the search resumes L bytes behind the hit.
                                         replace_case{"\\\\\\\\", "\\\\", "\\", "\\\\\\"},
                                         replace_case{"\\\\\\", "\\\\", "\\", "\\\\"},
                                         // Longer `to`: resumes inside the insert, which is safe
                                         // as long as `to` does not hold `from` at or behind L.
                                         replace_case{"aa", "a", "xy", "xyxy"},
                                         // `to` holds `from` behind L: would never end; resumes
                                         // behind the insert instead.
                                         replace_case{"aa", "a", "xa", "xaxa"},
                                         replace_case{"abc", "", "zz", "abc"}));

TEST(ustring_replace, null_arguments_throw_in_order_and_leave_the_text) {
    std::string text = "keep";
    try {
        uString::replace(text, nullptr, nullptr);
        FAIL();
    } catch (const uString::error& e) {
        EXPECT_STREQ(e.what(), "unable to perform string replacement from null original text");
    }
    try {
        uString::replace(text, "k", nullptr);
        FAIL();
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "unable to perform string replacement with null replacement text");
    }
    EXPECT_EQ(text, "keep");
}

TEST(ustring_format_int, replaces_appends_and_defaults) {
    std::string text = "old ";
    EXPECT_STREQ(uString::format_int(5, text, false, "GetLastError() returned %d"),
                 "GetLastError() returned 5");
    uString::format_int(-3, text, true, nullptr);
    EXPECT_EQ(text, "GetLastError() returned 5-3");
    uString::format_int(127, text, false, nullptr);
    EXPECT_EQ(text, "127");
}

TEST(ustring_format_int, cuts_a_long_rendering_at_1023_bytes) {
    std::string text;
    uString::format_int(7, text, false, "%02000d");
    EXPECT_EQ(text.size(), 1023u);
    EXPECT_EQ(text.back(), '0');
}

}  // namespace
