#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>

#include "shell/completion.h"
#include "shell/status_line.h"
#include "utilities/uterminal.h"

namespace {

struct completion_case {
    const char* name;
    std::string before_cursor;
    std::size_t word_start;
    std::vector<std::string> words;
};

class completion_cases : public testing::TestWithParam<completion_case> {};

TEST_P(completion_cases, offers_the_words) {
    const completion_case& c = GetParam();
    const VX_UTL::completion found = complete_words(c.before_cursor);
    EXPECT_EQ(found.word_start, c.word_start);
    EXPECT_EQ(found.words, c.words);
}

INSTANTIATE_TEST_SUITE_P(
    table, completion_cases,
    testing::Values(
        completion_case{
            "all_commands",
            "",
            0,
            {"connect ", "disconnect ", "help ", "log ", "prodtest ", "quit ", "wattscope "}},
        completion_case{"command", "  wat", 2, {"wattscope "}},
        completion_case{"after_help", "help q", 5, {"quit "}},
        completion_case{"next_command", "help;con", 5, {"connect "}},
        completion_case{"semicolon_in_a_quoted_command", "\"help;x\";con", 9, {"connect "}},
        completion_case{"semicolon_in_a_quoted_word", "log -c \"a;wat", 10, {"wattscope "}},
        completion_case{"quoted_command", "\"help q", 6, {"quit "}},
        completion_case{"options", "wattscope -o a.csv --sa", 19, {"--sampfreq ", "--saveall "}},
        completion_case{"values", "wattscope ws", 10, {"ws ", "ws+ "}}),
    [](const auto& test) { return std::string(test.param.name); });

struct file_case {
    const char* name;
    std::vector<std::string> files;  // A trailing '/' makes a folder.
    std::string before_cursor;       // F stands for the test's folder.
    std::vector<std::string> words;
};

class file_cases : public testing::TestWithParam<file_case> {};

// File names are given as the line splitter will read them back.
TEST_P(file_cases, names_files_the_line_can_hold) {
    const file_case& c = GetParam();
    // A folder of its own: ctest runs the cases side by side.
    const std::string folder =
        (std::filesystem::temp_directory_path() /
         ("zelno_completion_" + std::string(c.name) + "_" + std::to_string(std::random_device()())))
            .generic_string();
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    const auto in_folder = [&](std::string text) {
        for (std::size_t at = text.find('F'); at != std::string::npos; at = text.find('F', at)) {
            text.replace(at, 1, folder);
            at += folder.size();
        }
        return text;
    };
    for (const std::string& file : c.files) {
        std::error_code error;
        if (file.ends_with('/')) {
            std::filesystem::create_directory(folder + '/' + file, error);
        } else {
            std::ofstream(folder + '/' + file).put('\n');
        }
        if (!std::filesystem::exists(folder + '/' + file, error)) {
            GTEST_SKIP() << "the file system takes no name " << file;
        }
    }
    std::vector<std::string> expected;
    for (const std::string& word : c.words) {
        expected.push_back(in_folder(word));
    }
    EXPECT_EQ(complete_words(in_folder(c.before_cursor)).words, expected);
    std::filesystem::remove_all(folder);
}

INSTANTIATE_TEST_SUITE_P(
    table, file_cases,
    testing::Values(
        file_case{"plain_and_hidden",
                  {"limits.txt", ".limits", "lists/"},
                  "prodtest -c x --input F/li",
                  {"F/limits.txt ", "F/lists/"}},
        file_case{"hidden_when_asked", {"limits.txt", ".limits"}, "log --cmd F/.l", {"F/.limits "}},
        file_case{"blank_quotes_all",
                  {"a b.txt", "ab.txt", "a b/"},
                  "log --cmd F/a",
                  {"\"F/a b.txt\" ", "\"F/a b/", "\"F/ab.txt\" "}},
        file_case{"inside_a_quote", {"a b.txt"}, "log --cmd \"F/a", {"\"F/a b.txt\" "}},
        file_case{
            "semicolon_cuts_the_line", {"a;b.txt", "a;b c", "ab.txt"}, "log -c F/a", {"F/ab.txt "}},
        file_case{"quote_inside_a_plain_word", {"q\"x.txt"}, "log -c F/q", {"F/q\"x.txt "}},
        file_case{"quote_not_in_a_quoted_word",
                  {"q\"x.txt", "q y.txt"},
                  "log -c F/q",
                  {"\"F/q y.txt\" "}},
        file_case{"quoted_command_holds_semicolon",
                  {"a;b.txt", "a b.txt"},
                  "\"log -c F/a",
                  {"F/a;b.txt "}}),
    [](const auto& test) { return std::string(test.param.name); });

struct describe_case {
    const char* name;
    int64_t elapsed_ms;
    int32_t limit_ms;
    run_figures figures;
    const char* text;
};

class describe_cases : public testing::TestWithParam<describe_case> {};

TEST_P(describe_cases, shows_time_limit_and_figures) {
    const describe_case& c = GetParam();
    EXPECT_EQ(describe_run("wattscope", c.elapsed_ms, c.limit_ms, c.figures), c.text);
}

INSTANTIATE_TEST_SUITE_P(
    table, describe_cases,
    testing::Values(describe_case{"no_limit", 12449, 0, {}, "wattscope 12.4 s"},
                    describe_case{"limit", 400, 1500, {}, "wattscope 0.4 s / 1.5 s"},
                    describe_case{"all_figures",
                                  12400,
                                  0,
                                  {24800, 0.00247, 0.0306},
                                  "wattscope 12.4 s: 24,800 samples, mean 2.47 mA, 30.6 mJ"},
                    describe_case{"some_figures",
                                  0,
                                  0,
                                  {1234567, {}, 2.0e-7},
                                  "wattscope 0.0 s: 1,234,567 samples, 200 nJ"},
                    describe_case{"large_and_zero",
                                  0,
                                  0,
                                  {999, 0.0, 123.4},
                                  "wattscope 0.0 s: 999 samples, mean 0.00 A, 123 J"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(status_line, fits_the_terminal_width) {
    const struct {
        int32_t width;
        const char* text;
        const char* shown;
    } cases[] = {{0, "wattscope 1.0 s", "wattscope 1.0 s"},  // Width not known.
                 {16, "wattscope 1.0 s", "wattscope 1.0 s"},
                 {15, "wattscope 1.0 s", "wattscope 1.0 "},  // The last column stays free.
                 {1, "wattscope 1.0 s", ""}};
    for (const auto& c : cases) {
        EXPECT_EQ(fit_width(c.text, c.width), c.shown) << c.width;
    }
}

struct history_case {
    const char* name;
    std::string text;
    std::size_t limit;
    std::vector<std::string> lines;
    bool rewrite;
};

class history_cases : public testing::TestWithParam<history_case> {};

TEST_P(history_cases, keeps_the_last_lines) {
    const history_case& c = GetParam();
    const VX_UTL::history_text found = VX_UTL::parse_history(c.text, c.limit);
    EXPECT_EQ(found.lines, c.lines);
    EXPECT_EQ(found.rewrite, c.rewrite);
}

INSTANTIATE_TEST_SUITE_P(
    table, history_cases,
    testing::Values(history_case{"plain", "help\r\n\n  \nquit", 3, {"help", "quit"}, false},
                    history_case{"last_of_many", "a\nb\nc\nd\n", 2, {"c", "d"}, false},
                    history_case{"grown_past_twice", "a\nb\nc\nd\ne\n", 2, {"d", "e"}, true},
                    history_case{"older_escaped",
                                 "_HiStOrY_V2_\nhelp\\040quit\\012\na\\\\b\\0\n",
                                 5,
                                 {"help quit", "a\\b\\0"},
                                 true}),
    [](const auto& test) { return std::string(test.param.name); });

}  // namespace
