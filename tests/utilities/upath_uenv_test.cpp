#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

#include "utilities/uenv.h"
#include "utilities/uerror.h"
#include "utilities/upath.h"

namespace {

using VX_UTL::uEnv;
using VX_UTL::uPath;

struct append_case {
    const char* path;
    const char* piece;
    const char* result;
};

class append_cases : public testing::TestWithParam<append_case> {};

TEST_P(append_cases, joins_with_one_separator) {
    const append_case& c = GetParam();
    std::string path = c.path;
    uPath::append(path, c.piece);
    EXPECT_EQ(path, c.result);
}

INSTANTIATE_TEST_SUITE_P(
    table, append_cases,
    testing::Values(append_case{"", "common", "common"}, append_case{"..", "..", "../.."},
                    append_case{"a/", "b", "a/b"}, append_case{"a\\", "b", "a/b"},
                    append_case{"a", "/b", "a/b"}, append_case{"a", "\\b", "a/b"},
                    append_case{"a\\b", "c\\d", "a/b/c/d"}, append_case{"//a////b", "c", "/a/b/c"},
                    append_case{"\\\\\\\\x", "y", "/x/y"}));

TEST(upath_append, builds_the_dependency_directory) {
    std::string path = "..";
    for (const char* piece : {"..", "..", "..", "common", "dblnk"}) {
        uPath::append(path, piece);
    }
    EXPECT_EQ(path, "../../../../common/dblnk");
}

TEST(uenv, unset_gives_empty_text_and_set_overwrites) {
    unsetenv("ZELNO_TEST_VARIABLE");
    const char* value = uEnv::get("ZELNO_TEST_VARIABLE");
    ASSERT_NE(value, nullptr);
    EXPECT_STREQ(value, "");
    uEnv::set("ZELNO_TEST_VARIABLE", "one");
    uEnv::set("ZELNO_TEST_VARIABLE", "two");
    EXPECT_STREQ(uEnv::get("ZELNO_TEST_VARIABLE"), "two");
    uEnv::set("ZELNO_TEST_VARIABLE", "");
    EXPECT_STREQ(uEnv::get("ZELNO_TEST_VARIABLE"), "");
}

TEST(uenv, null_arguments_throw_the_fixed_texts) {
    const struct {
        const char* name;
        const char* value;
        const char* text;
    } cases[] = {
        {nullptr, "v", "failed set an environment variable name to null"},
        {nullptr, nullptr, "failed set an environment variable name to null"},
        {"ZELNO_TEST_VARIABLE", nullptr, "failed set an environment variable value to null"},
    };
    for (const auto& c : cases) {
        try {
            uEnv::set(c.name, c.value);
            ADD_FAILURE() << c.text;
        } catch (const std::runtime_error& e) {
            EXPECT_STREQ(e.what(), c.text);
        }
    }
    EXPECT_THROW(uEnv::get(nullptr), VX_UTL::source_utilities_error);
}

TEST(uenv, a_read_on_another_thread_keeps_this_threads_text) {
    uEnv::set("ZELNO_TEST_A", "alpha");
    uEnv::set("ZELNO_TEST_B", "beta");
    const char* mine = uEnv::get("ZELNO_TEST_A");
    std::thread other([] { uEnv::get("ZELNO_TEST_B"); });
    other.join();
    EXPECT_STREQ(mine, "alpha");
    // This thread's next read reuses the same entry.
    EXPECT_STREQ(uEnv::get("ZELNO_TEST_B"), "beta");
    EXPECT_EQ(mine, uEnv::get("ZELNO_TEST_A"));
}

}  // namespace
