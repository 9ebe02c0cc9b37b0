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

TEST(udll, file_names_follow_the_suffix_rule) {
    // Base, file name, file name of ABI version 0. The suffix test is a
    // case-sensitive search, and the suffix alone is no name.
    // clang-format off
    const char* const rows[][3] = {
        {"tgcfgsetup", "libtgcfgsetup.so", "libtgcfgsetup.so.0"}, {"libx.so", "libx.so", "libx.so"},
        {"libx.so.0", "libx.so.0", "libx.so.0"}, {"x.SO", "libx.SO.so", "libx.SO.so.0"},
        {".so", "lib.so.so", "lib.so.so.0"}};
    // clang-format on
    for (const auto& row : rows) {
        std::string file = "<";
        EXPECT_EQ(uDll::library_file_name(file, row[0]), "<" + std::string(row[1]));
        std::string versioned;
        EXPECT_STREQ(uDll::versioned_library_file_name(versioned, row[0], "0"), row[2]);
    }
    std::string untouched = "kept";
    EXPECT_STREQ(uDll::library_file_name(untouched, nullptr), "kept");
    EXPECT_FALSE(uDll::has_library_suffix(nullptr));
}

// A failed load is retried; a loaded object ignores new names.
TEST(udll, load_and_look_up_on_several_threads) {
    uDll library(nullptr, -1);
    EXPECT_EQ(library.get_symbol("udll_one_answer"), nullptr);
    EXPECT_FALSE(library.load(nullptr, -1));
    EXPECT_FALSE(library.load("libzelno_no_such_library.so", -1));
    EXPECT_EQ(library.last_error().rfind("failed to load libzelno_no_such_library.so: ", 0), 0u)
        << library.last_error();
    ASSERT_TRUE(library.load((double_dir + "/libudll_one.so").c_str(), -1));
    EXPECT_EQ(library.last_error(), "");
    EXPECT_TRUE(library.load((double_dir + "/libudll_two.so").c_str(), -1));
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&library, t] {
            for (int i = 0; i < 200; ++i) {
                library.get_symbol((i + t) % 2 == 0 ? "udll_one_answer" : "udll_two_answer");
                library.last_error();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(library.get_symbol("udll_two_answer"), nullptr);
    EXPECT_NE(library.last_error().find("udll_two_answer"), std::string::npos);
    const auto answer = reinterpret_cast<int (*)()>(library.get_symbol("udll_one_answer"));
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(), 42);
    EXPECT_EQ(library.last_error(), "");
}

// The loader read LD_LIBRARY_PATH at process start; directories added since
// must count all the same, and a file there that won't load says why.
TEST(udll, search_reads_the_variable_as_it_stands_now) {
    ASSERT_FALSE(uDll(nullptr, -1).load("libudll_one.so", -1));
    const std::string broken_dir = testing::TempDir() + "udll_broken";
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
