#include "usecases/usecase_library.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include "utilities/uenv.h"

namespace fs = std::filesystem;

// What a transcript can't show: the search path after failed loads, and a
// null name, which no command passes. Runs in <tmp>/run, so that a library
// placed in <tmp> is found by the first attempt.
TEST(usecase_library, each_load_attempt_adds_the_dependency_folder_and_a_null_name_only_loads) {
    std::string root = (fs::temp_directory_path() / "zelno-usecases-XXXXXX").string();
    ASSERT_NE(mkdtemp(root.data()), nullptr);
    fs::create_directories(fs::path(root) / "run");
    const fs::path old_directory = fs::current_path();
    fs::current_path(fs::path(root) / "run");
    const std::string old_search = VX_UTL::uEnv::get("LD_LIBRARY_PATH");
    VX_UTL::uEnv::set("LD_LIBRARY_PATH", "/nonexistent");
    const std::string entry = ":../../../../common/dblnk";

    usecase_library library;
    for (int attempt = 1; attempt <= 2; ++attempt) {
        EXPECT_THROW(library.symbol("wattscope_run"), std::runtime_error);
    }
    fs::copy_file(fs::path(ZELNO_TEST_LIBRARY_DIR) / "usecase/basic/libwattscopestandalone.so",
                  fs::path(root) / "libwattscopestandalone.so");
    EXPECT_EQ(library.symbol(nullptr), nullptr);
    EXPECT_EQ(library.symbol(nullptr), nullptr);
    EXPECT_NE(library.symbol("prodtest_stop"), nullptr);
    EXPECT_EQ(VX_UTL::uEnv::get("LD_LIBRARY_PATH"), "/nonexistent" + entry + entry + entry);

    VX_UTL::uEnv::set("LD_LIBRARY_PATH", old_search.c_str());
    fs::current_path(old_directory);
    fs::remove_all(root);
}
