#include "utilities/utracelog.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "utilities/udll.h"
#include "utilities/utrace_registry.h"

namespace {

namespace fs = std::filesystem;
using VX_UTL::uTraceLog;

// Flags of mask 1 and the one blank that time stamp mode 0 gives.
constexpr const char* plain_prefix = "M      ";

// Each test writes into a directory of its own, unique also across builds
// that run their tests at the same time.
class trace_log_test : public testing::Test {
  protected:
    void SetUp() override {
        const std::string test = testing::UnitTest::GetInstance()->current_test_info()->name();
        directory = fs::temp_directory_path() /
                    ("zelno_trace_" + test + "_" + std::to_string(std::random_device{}()));
        fs::create_directories(directory);
    }
    void TearDown() override { fs::remove_all(directory); }

    std::string path(const std::string& name) const { return (directory / name).string(); }

    static std::string read(const std::string& file) {
        std::stringstream text;
        text << std::ifstream(file, std::ios::binary).rdbuf();
        return text.str();
    }

    fs::path directory;
};

TEST_F(trace_log_test, flags_show_one_letter_per_mask_bit) {
    struct row {
        uint32_t mask;
        const char* flags;  // Null: no line at all.
    };
    const row rows[] = {{3, "MW   "},  {16, "    E"}, {31, "MWFAE"},
                        {32, "     "}, {0, nullptr},  {1u | 64u, "M    "}};
    const std::string file = path("flags.log");
    std::string expected;
    {
        uTraceLog log(file, true, false, false, false, 1);
        for (const row& r : rows) {
            log.write(r.mask, 0, "mask %u", r.mask);
            if (r.flags != nullptr) {
                expected += std::string(r.flags) + "  mask " + std::to_string(r.mask) + "\n";
            }
        }
    }
    EXPECT_EQ(read(file), expected);
}

TEST_F(trace_log_test, exactly_one_line_end_is_replaced_by_a_line_feed) {
    struct row {
        const char* message;
        const char* kept;
    };
    const row rows[] = {{"a", "a"},   {"a\n", "a"},     {"a\r\n", "a"},   {"a\n\r", "a"},
                        {"a\r", "a"}, {"a\n\n", "a\n"}, {"a\r\r", "a\r"}, {"a\r\n\n", "a\r\n"},
                        {"\n", ""},   {"", ""}};
    const std::string file = path("ends.log");
    std::string expected;
    {
        uTraceLog log(file, true, false, false, false, 1);
        for (const row& r : rows) {
            log.write(1, 0, "%s", r.message);
            expected += std::string(plain_prefix) + r.kept + "\n";
        }
    }
    EXPECT_EQ(read(file), expected);
}

TEST_F(trace_log_test, time_stamp_by_mode) {
    const std::string file = path("modes.log");
    {
        uTraceLog log(file, true, false, false, false, 1);
        for (uint32_t mode : {1u, 2u, 3u, 0u, 9u}) {
            log.write(1, mode, "m%u", mode);
        }
    }
    const std::string date = R"(\d\d/\d\d/\d\d)";
    const std::string time = R"(\d\d:\d\d:\d\d:\d{3})";
    const std::regex expected("M     " + date + " \\| m1\n" +  //
                              "M     " + time + " \\| m2\n" +  //
                              "M     " + date + " " + time + " \\| m3\n" +
                              "M      m0\nM      m9\n");
    const std::string text = read(file);
    EXPECT_TRUE(std::regex_match(text, expected)) << text;
}

TEST_F(trace_log_test, append_keeps_the_file_and_truncate_empties_it_once) {
    struct row {
        bool append;
        const char* expected;
    };
    for (const row r :
         {row{true, "old\nM      one\nM      two\n"}, row{false, "M      one\nM      two\n"}}) {
        const std::string file = path(r.append ? "append.log" : "truncate.log");
        std::ofstream(file) << "old\n";
        {
            uTraceLog log(file, true, false, false, r.append, 1);
            log.write(1, 0, "one");
            log.write(1, 0, "two");
        }
        EXPECT_EQ(read(file), r.expected) << "append " << r.append;
    }
}

TEST_F(trace_log_test, a_file_that_cannot_be_opened_is_tried_at_the_next_line) {
    const fs::path later = directory / "later";
    const std::string file = (later / "trace.log").string();
    uTraceLog log(file, true, true, true, false, 1);

    testing::internal::CaptureStdout();
    log.write(1, 0, "lost");
    EXPECT_FALSE(fs::exists(file));
    fs::create_directory(later);
    log.write(1, 0, "kept");
    // The echoes don't depend on the file.
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "M      lost\nM      kept\n");
    EXPECT_EQ(read(file), "M      kept\n");
}

TEST_F(trace_log_test, lines_of_two_threads_never_mix) {
    constexpr int lines_per_thread = 300;
    const std::string file = path("threads.log");
    {
        uTraceLog log(file, true, false, false, false, 1);
        auto writer = [&log](char letter) {
            const std::string body(200, letter);
            for (int i = 0; i < lines_per_thread; ++i) {
                log.write(1, 2, "%s", body.c_str());
            }
        };
        std::thread first(writer, 'a');
        std::thread second(writer, 'b');
        first.join();
        second.join();
    }
    std::istringstream text(read(file));
    const std::regex whole_line(R"(M     \d\d:\d\d:\d\d:\d{3} \| (a{200}|b{200}))");
    int count = 0;
    for (std::string line; std::getline(text, line); ++count) {
        ASSERT_TRUE(std::regex_match(line, whole_line)) << line;
    }
    EXPECT_EQ(count, 2 * lines_per_thread);
}

TEST_F(trace_log_test, a_long_message_is_kept_whole) {
    const std::string file = path("long.log");
    const std::string long_text(100000, 'x');
    {
        uTraceLog log(file, true, false, false, false, 1);
        log.write(1, 0, "short");
        log.write(1, 0, "%s|%d\r\n", long_text.c_str(), 42);
        log.write(1, 0, "short again");
    }
    EXPECT_EQ(read(file), std::string(plain_prefix) + "short\n" + plain_prefix + long_text +
                              "|42\n" + plain_prefix + "short again\n");
}

// The level stays 0 in zelno; raised here, a failed library load must reach
// an installed log. The registry is put back however the test ends.
TEST_F(trace_log_test, failed_load_reaches_the_installed_log_above_level_one) {
    struct installed {
        explicit installed(uTraceLog& log) {
            VX_UTL::get_trace_registry().trace_log = &log;
            VX_UTL::get_trace_registry().trace_level = 2;
        }
        ~installed() {
            VX_UTL::get_trace_registry().trace_level = 0;
            VX_UTL::get_trace_registry().trace_log = nullptr;
        }
    };
    const std::string file = path("udll.log");
    {
        uTraceLog log(file, true, false, false, false, 1);
        const installed guard(log);
        VX_UTL::uDll library(nullptr, -1);
        EXPECT_FALSE(library.load("libzelno_missing_for_trace.so", -1));
    }
    const std::string text = read(file);
    EXPECT_TRUE(std::regex_match(text, std::regex(R"(M     \d\d:\d\d:\d\d:\d{3} \| uDll: )"
                                                  R"(failed to load [^\n]+\n)")))
        << text;
}

}  // namespace
