#include "usecases/usecase_library.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include "utilities/uenv.h"

namespace {

namespace fs = std::filesystem;

const char* const file_name = "libwattscopestandalone.so";
const std::string dependency_entry = ":../../../../common/dblnk";

fs::path double_library(const char* variant) {
    return fs::path(ZELNO_TEST_LIBRARY_DIR) / "usecase" / variant / file_name;
}

std::string search_path() {
    return VX_UTL::uEnv::get("LD_LIBRARY_PATH");
}

std::string thrown_text(usecase_library& library, const char* name) {
    try {
        library.symbol(name);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "nothing thrown";
}

// Each test runs in <root>/run, with the search path set to a directory that
// doesn't exist; both come back afterwards.
class UseCaseLibrary : public testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "zelno-usecases-XXXXXX").string();
        ASSERT_NE(nullptr, mkdtemp(pattern.data()));
        root = pattern;
        fs::create_directories(root / "run");
        old_directory = fs::current_path();
        fs::current_path(root / "run");
        old_search = search_path();
        VX_UTL::uEnv::set("LD_LIBRARY_PATH", "/nonexistent");
    }
    void TearDown() override {
        VX_UTL::uEnv::set("LD_LIBRARY_PATH", old_search.c_str());
        fs::current_path(old_directory);
        fs::remove_all(root);
    }
    void place(const char* variant, const fs::path& target) {
        fs::create_directories((root / "run" / target).parent_path());
        fs::copy_file(double_library(variant), root / "run" / target);
    }

    fs::path root;
    fs::path old_directory;
    std::string old_search;
};

TEST_F(UseCaseLibrary, EachFailedLoadAddsTheDependencyFolderAgain) {
    usecase_library library;
    for (int attempt = 1; attempt <= 2; ++attempt) {
        EXPECT_EQ("Unable to load libwattscopestandalone.so\n",
                  thrown_text(library, "wattscope_run"));
    }
    EXPECT_EQ("/nonexistent" + dependency_entry + dependency_entry, search_path());

    place("basic", fs::path("wattscope") / file_name);
    EXPECT_NE(nullptr, library.symbol("wattscope_run"));
    EXPECT_NE(nullptr, library.symbol("prodtest_stop"));
    EXPECT_EQ("/nonexistent" + dependency_entry + dependency_entry + dependency_entry,
              search_path());
}

TEST_F(UseCaseLibrary, ANullNameOnlyLoads) {
    place("basic", fs::path("..") / file_name);
    usecase_library library;
    EXPECT_EQ(nullptr, library.symbol(nullptr));
    EXPECT_EQ("/nonexistent" + dependency_entry, search_path());
    EXPECT_EQ(nullptr, library.symbol(nullptr));
    EXPECT_NE(nullptr, library.symbol("wattscope_create"));
    EXPECT_EQ("/nonexistent" + dependency_entry, search_path());
}

}  // namespace
