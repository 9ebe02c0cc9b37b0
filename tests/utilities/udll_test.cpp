#include "utilities/udll.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "utilities/uenv.h"
#include "utilities/upath.h"
#include "utilities/uplatform.h"

namespace {

using VX_UTL::uDll;
using VX_UTL::uEnv;
namespace uPlatform = VX_UTL::uPlatform;

const bool windows = std::string(uPlatform::library_suffix) == ".dll";

std::string file_of(const char* base) {
    std::string file;
    return uDll::library_file_name(file, base);
}

// The doubles' folder, or a file in it, in the platform's form.
std::string double_path(const char* base = nullptr) {
    std::string path;
    VX_UTL::uPath::append(path, ZELNO_TEST_LIBRARY_DIR "/udll");
    return base != nullptr ? path + uPlatform::path_separator + file_of(base) : path;
}

TEST(udll, file_names_follow_the_suffix_rule) {
    // Base; file name and that of ABI version 0 on POSIX; file name on Windows,
    // with no version. A case-sensitive search; the suffix alone is no name.
    // clang-format off
    const char* const rows[][4] = {
        {"tgcfgsetup", "libtgcfgsetup.so", "libtgcfgsetup.so.0", "tgcfgsetup.dll"},
        {".dll.so", ".dll.so", ".dll.so", ".dll.so"}, {".so.dll", ".so.dll", ".so.dll", ".so.dll"},
        {"x.SO.DLL", "libx.SO.DLL.so", "libx.SO.DLL.so.0", "x.SO.DLL.dll"},
        {".so", "lib.so.so", "lib.so.so.0", ".so.dll"},
        {".dll", "lib.dll.so", "lib.dll.so.0", ".dll.dll"}};
    // clang-format on
    for (const auto& row : rows) {
        std::string file = "<";
        EXPECT_EQ(uDll::library_file_name(file, row[0]), "<" + std::string(row[windows ? 3 : 1]));
        std::string versioned;
        EXPECT_STREQ(uDll::versioned_library_file_name(versioned, row[0], "0"),
                     row[windows ? 3 : 2]);
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
    const std::string missing = file_of("zelno_no_such_library");
    EXPECT_FALSE(library.load(missing.c_str(), -1));
    // 126: the module was not found.
    EXPECT_EQ(library.last_error().rfind(
                  "failed to load " + missing + (windows ? " with error code 126" : ": "), 0),
              0u)
        << library.last_error();
    ASSERT_TRUE(library.load(double_path("udll_one").c_str(), -1));
    EXPECT_EQ(library.last_error(), "");
    EXPECT_TRUE(library.load(double_path("udll_two").c_str(), -1));
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
    // 127: the procedure was not found.
    EXPECT_NE(
        library.last_error().find(windows ? "GetLastError() returned 127" : "udll_two_answer"),
        std::string::npos);
    const auto answer = reinterpret_cast<int (*)()>(library.get_symbol("udll_one_answer"));
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(), 42);
    EXPECT_EQ(library.last_error(), "");
}

// Directories added to the search variable after the process started count
// for a load by bare name, and a file there that won't load says why.
TEST(udll, search_reads_the_variable_as_it_stands_now) {
    ASSERT_FALSE(uDll(nullptr, -1).load(file_of("udll_one").c_str(), -1));
    const std::string broken_dir = testing::TempDir() + "udll_broken";
    std::filesystem::create_directories(broken_dir);
    std::ofstream(broken_dir + uPlatform::path_separator + file_of("udll_broken")) << "junk\n";
    const char* variable = uPlatform::library_search_variable;
    const std::string old_value = uEnv::get(variable);
    // An empty entry is skipped, not read as the working directory.
    uEnv::set(variable, (old_value + uPlatform::library_search_separator).c_str());
    uDll::add_search_directory(broken_dir);
    uDll::add_search_directory(double_path());
    uDll one(nullptr, -1);
    EXPECT_TRUE(one.load(file_of("udll_one").c_str(), -1)) << one.last_error();
    uDll broken(nullptr, -1);
    EXPECT_FALSE(broken.load(file_of("udll_broken").c_str(), -1));
    // 193: not a valid program file.
    EXPECT_NE(broken.last_error().find(windows ? "error code 193" : broken_dir), std::string::npos)
        << broken.last_error();
    uEnv::set(variable, old_value.c_str());
}

}  // namespace
