#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "utilities/uenv.h"
#include "utilities/upath.h"
#include "utilities/uplatform.h"
#include "utilities/ustring.h"

namespace {

using VX_UTL::uEnv;
using VX_UTL::uPath;
using VX_UTL::uString;

// L is the length of `from`: resuming there may find the insert again.
TEST(ustring_replace, gives_the_text) {
    // clang-format off
    const struct { const char *name, *text, *from, *to, *result; } rows[] = {
        {"absent", "abc", "x", "y", "abc"}, {"empty_text", "", "x", "y", ""},
        {"from_longer_than_text", "ab", "abc", "y", "ab"},
        {"same_length", "a/b/c", "/", "\\", "a\\b\\c"},
        {"empty_to_resumes_behind_L", "abXabab", "ab", "", "Xab"},
        {"shorter_to_leaves_pairs", "\\\\\\\\", "\\\\", "\\", "\\\\\\"},
        {"longer_to_resumes_inside", "aa", "a", "xy", "xyxy"},
        {"to_holds_from_behind_L", "aa", "a", "xa", "xaxa"},
        {"to_holds_from_at_0_and_behind_L", "xxabyy", "ab", "abab", "xxababyy"},
        {"to_holds_from_at_0_only", "abb", "ab", "aba", "ababa"},
        {"empty_from", "abc", "", "zz", "abc"}};
    // clang-format on
    for (const auto& row : rows) {
        std::string text = row.text;
        EXPECT_STREQ(uString::replace(text, row.from, row.to), row.result) << row.name;
    }
}

TEST(ustring_format_int, replaces_appends_defaults_and_cuts_at_1023_bytes) {
    std::string text = "old ";
    EXPECT_STREQ(uString::format_int(5, text, false, "returned %d"), "returned 5");
    EXPECT_STREQ(uString::format_int(-3, text, true, nullptr), "returned 5-3");
    EXPECT_EQ(uString::format_int(7, text, false, "%02000d"), std::string(1023, '0'));
}

// The expected paths are written with '/', the platform's separator stands in.
TEST(upath_append, joins_with_one_platform_separator) {
    const char* const rows[][3] = {{"", "common", "common"},    {"..", "..", "../.."},
                                   {"a/", "b", "a/b"},          {"a\\b", "c\\d", "a/b/c/d"},
                                   {"//a////b", "c", "/a/b/c"}, {"\\\\\\\\x", "y", "/x/y"}};
    for (const auto& row : rows) {
        std::string path = row[0];
        uPath::append(path, row[1]);
        std::string expected = row[2];
        std::replace(expected.begin(), expected.end(), '/', VX_UTL::uPlatform::path_separator);
        EXPECT_EQ(path, expected) << row[0] << " + " << row[1];
    }
}

// The text lasts until this thread's next read, whatever other threads read.
TEST(uenv, each_thread_keeps_its_own_text) {
    uEnv::set("ZELNO_TEST_A", "alpha");
    const char* mine = uEnv::get("ZELNO_TEST_A");
    std::thread([] { uEnv::get("PATH"); }).join();
    EXPECT_STREQ(mine, "alpha");
}

// The shell reports these texts as they are. The first test decides when
// both arguments are null, and the text is left alone.
TEST(null_arguments, throw_the_fixed_texts) {
    using testing::StrEq;
    using testing::ThrowsMessage;
    std::string text = "keep";
    EXPECT_THAT([&] { uString::replace(text, nullptr, nullptr); },
                ThrowsMessage<std::runtime_error>(
                    StrEq("unable to perform string replacement from null original text")));
    EXPECT_THAT([&] { uString::replace(text, "k", nullptr); },
                ThrowsMessage<std::runtime_error>(
                    StrEq("unable to perform string replacement with null replacement text")));
    EXPECT_EQ(text, "keep");
    const auto null_name =
        ThrowsMessage<std::runtime_error>(StrEq("failed set an environment variable name to null"));
    EXPECT_THAT([] { uEnv::set(nullptr, nullptr); }, null_name);
    EXPECT_THAT([] { uEnv::get(nullptr); }, null_name);
    EXPECT_THAT([] { uEnv::set("ZELNO_TEST_A", nullptr); },
                ThrowsMessage<std::runtime_error>(
                    StrEq("failed set an environment variable value to null")));
}

}  // namespace
