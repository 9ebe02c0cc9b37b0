#include "utilities/udll.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using VX_UTL::uDll;

const std::string double_dir = ZELNO_TEST_LIBRARY_DIR "/udll";
const std::string library_one = double_dir + "/libudll_one.so";
const std::string library_two = double_dir + "/libudll_two.so";

TEST(uDllFileName, FollowsTheSuffixRule) {
    struct row {
        const char* base;
        const char* file;
        const char* versioned;  // ABI version "0"
    };
    const row rows[] = {
        {"tgcfgsetup", "libtgcfgsetup.so", "libtgcfgsetup.so.0"},
        {"wattscopestandalone", "libwattscopestandalone.so", "libwattscopestandalone.so.0"},
        {"libx.so", "libx.so", "libx.so"},        // ends in the suffix
        {"libx.so.0", "libx.so.0", "libx.so.0"},  // holds it in the middle
        {"x.SO", "libx.SO.so", "libx.SO.so.0"},   // case counts
        {".so", "lib.so.so", "lib.so.so.0"},      // the suffix alone is no name
        {"", "lib.so", "lib.so.0"},
    };
    for (const row& r : rows) {
        std::string file;
        EXPECT_STREQ(uDll::library_file_name(file, r.base), r.file) << r.base;
        std::string versioned;
        EXPECT_STREQ(uDll::versioned_library_file_name(versioned, r.base, "0"), r.versioned)
            << r.base;
    }
    std::string untouched = "kept";
    EXPECT_STREQ(uDll::library_file_name(untouched, nullptr), "kept");
    EXPECT_FALSE(uDll::has_library_suffix(nullptr));
}

TEST(uDllLoad, RetriesAfterAFailureAndThenIgnoresNewNames) {
    uDll library(nullptr, -1);
    EXPECT_FALSE(library.load(nullptr, -1));
    EXPECT_EQ(library.last_error(), "");

    EXPECT_FALSE(library.load("libzelno_no_such_library.so", -1));
    EXPECT_FALSE(library.is_loaded());
    EXPECT_EQ(library.last_error().rfind("failed to load libzelno_no_such_library.so: ", 0), 0u)
        << library.last_error();

    ASSERT_TRUE(library.load(library_one.c_str(), -1));
    EXPECT_EQ(library.last_error(), "");

    // Loaded: the new name is not taken over, so two's function stays unknown.
    EXPECT_TRUE(library.load(library_two.c_str(), -1));
    EXPECT_NE(library.get_symbol("udll_one_answer"), nullptr);
    EXPECT_EQ(library.get_symbol("udll_two_answer"), nullptr);
}

TEST(uDllSymbol, FailureTextLastsUntilTheNextLookUp) {
    uDll library(library_one.c_str(), -1);
    EXPECT_EQ(library.get_symbol("udll_one_answer"), nullptr);  // nothing loaded yet
    ASSERT_TRUE(library.load(nullptr, -1));

    EXPECT_EQ(library.get_symbol("udll_absent"), nullptr);
    EXPECT_NE(library.last_error().find("udll_absent"), std::string::npos) << library.last_error();

    const auto answer = reinterpret_cast<int (*)()>(library.get_symbol("udll_one_answer"));
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(), 42);
    EXPECT_EQ(library.last_error(), "");
}

TEST(uDllSymbol, LookUpsRunOnSeveralThreadsAtOnce) {
    uDll library(nullptr, -1);
    ASSERT_TRUE(library.load(library_one.c_str(), -1));
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&library, t] {
            for (int i = 0; i < 200; ++i) {
                library.get_symbol((i + t) % 2 == 0 ? "udll_one_answer" : "udll_absent");
                library.last_error();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_NE(library.get_symbol("udll_one_answer"), nullptr);
}

// The loader read LD_LIBRARY_PATH at process start; directories added since
// must count all the same, and a file there that won't load says why.
TEST(uDllSearch, ReadsTheSearchVariableAsItStandsNow) {
    uDll before(nullptr, -1);
    ASSERT_FALSE(before.load("libudll_one.so", -1));

    const std::string broken_dir = ::testing::TempDir() + "udll_broken";
    std::filesystem::create_directories(broken_dir);
    std::ofstream(broken_dir + "/libudll_broken.so") << "not a library\n";
    const char* old = getenv("LD_LIBRARY_PATH");
    const std::string old_value = old != nullptr ? old : "";
    // An empty entry is skipped, not read as the working directory.
    setenv("LD_LIBRARY_PATH", (old_value + "::" + broken_dir + ":" + double_dir).c_str(), 1);

    uDll one(nullptr, -1);
    EXPECT_TRUE(one.load("libudll_one.so", -1)) << one.last_error();
    uDll broken(nullptr, -1);
    EXPECT_FALSE(broken.load("libudll_broken.so", -1));
    EXPECT_NE(broken.last_error().find(broken_dir + "/libudll_broken.so"), std::string::npos)
        << broken.last_error();
    setenv("LD_LIBRARY_PATH", old_value.c_str(), 1);
}

}  // namespace
