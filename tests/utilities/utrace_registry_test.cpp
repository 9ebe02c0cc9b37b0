#include "utilities/utrace_registry.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>

#include "utilities/udll.h"
#include "utilities/utracelog.h"

namespace {

using VX_UTL::get_trace_registry;
using VX_UTL::uTraceRegistry;

// A failed load asks the registry; only from level 1 does its log see it.
TEST(uTraceRegistry, FailedLoadReachesTheLogOnlyFromLevelOne) {
    struct row {
        int32_t level;
        bool written;
    };
    uTraceRegistry& registry = get_trace_registry();
    ASSERT_EQ(&registry, &get_trace_registry());
    ASSERT_EQ(registry.trace_level, 0);
    for (const row r : {row{0, false}, row{1, true}}) {
        const std::string file =
            ::testing::TempDir() + "udll_trace_" + std::to_string(r.level) + ".log";
        std::filesystem::remove(file);
        {
            VX_UTL::uTraceLog log(file, true, false, false, false, 1);
            registry.trace_log = &log;
            registry.trace_level = r.level;
            VX_UTL::uDll library(nullptr, -1);
            EXPECT_FALSE(library.load("libzelno_no_such_library.so", -1));
            registry.trace_log = nullptr;
            registry.trace_level = 0;
        }
        ASSERT_EQ(std::filesystem::exists(file), r.written) << "level " << r.level;
        if (r.written) {
            std::stringstream text;
            text << std::ifstream(file).rdbuf();
            EXPECT_TRUE(std::regex_match(
                text.str(), std::regex("M     \\d\\d:\\d\\d:\\d\\d:\\d{3} \\| uDll: failed to load "
                                       "libzelno_no_such_library\\.so: [^\n]+\n")))
                << text.str();
        }
    }
}

}  // namespace
