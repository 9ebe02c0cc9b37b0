#include <gtest/gtest.h>

#include <filesystem>

#include "scratch_dir.h"
#include "shell/completion.h"
#include "shell/status_line.h"
#include "utilities/uterminal.h"

namespace {

using words = std::vector<std::string>;

TEST(completion, offers_the_words_of_the_command_in_hand) {
    // clang-format off
    const struct { std::string before_cursor; std::size_t word_start; words offered; } rows[] = {
        {"", 0, {"connect ", "disconnect ", "help ", "log ", "prodtest ", "quit ", "wattscope "}},
        {"  wat", 2, {"wattscope "}}, {"help q", 5, {"quit "}}, {"help;con", 5, {"connect "}},
        {"\"help;x\";con", 9, {"connect "}},             // A semicolon in a quoted command.
        {"log -c \"a;wat", 10, {"wattscope "}},          // One in a quoted word.
        {"\"help q", 6, {"quit "}},
        {"wattscope -o a.csv --sa", 19, {"--sampfreq ", "--saveall "}},
        {"wattscope ws", 10, {"ws ", "ws+ "}}};
    // clang-format on
    for (const auto& row : rows) {
        const VX_UTL::completion found = complete_words(row.before_cursor);
        EXPECT_EQ(found.word_start, row.word_start) << row.before_cursor;
        EXPECT_EQ(found.words, row.offered) << row.before_cursor;
    }
}

// File names are given as the line splitter will read them back. In the
// rows, a trailing '/' makes a folder and F stands for the row's own folder.
TEST(completion, names_files_the_line_can_hold) {
    // clang-format off
    const struct { words files; std::string before_cursor; words offered; } rows[] = {
        {{"limits.txt", ".limits", "lists/"}, "prodtest -c x --input F/li",
         {"F/limits.txt ", "F/lists/"}},
        {{"limits.txt", ".limits"}, "log --cmd F/.l", {"F/.limits "}},  // Hidden when asked.
        {{"a b.txt", "ab.txt", "a b/"}, "log --cmd F/a",  // A blank quotes all.
         {"\"F/a b.txt\" ", "\"F/a b/", "\"F/ab.txt\" "}},
        {{"a b.txt"}, "log --cmd \"F/a", {"\"F/a b.txt\" "}},
        {{"a;b.txt", "a;b c", "ab.txt"}, "log -c F/a", {"F/ab.txt "}},  // ';' cuts the line.
        {{"q\"x.txt"}, "log -c F/q", {"F/q\"x.txt "}},  // A quote inside a plain word...
        {{"q\"x.txt", "q y.txt"}, "log -c F/q", {"\"F/q y.txt\" "}},  // ...not in a quoted one.
        {{"a;b.txt", "a b.txt"}, "\"log -c F/a", {"F/a;b.txt "}}};  // A quoted command holds ';'.
    // clang-format on
    for (std::size_t r = 0; r < std::size(rows); ++r) {
        const standin_test::scratch_dir dir;
        const std::string folder = std::filesystem::path(dir.file("")).generic_string();
        const auto in_folder = [&](std::string text) {
            for (std::size_t at = text.find("F/"); at != std::string::npos;
                 at = text.find("F/", at + folder.size())) {
                text.replace(at, 2, folder);
            }
            return text;
        };
        bool takes_all_names = true;
        for (const std::string& file : rows[r].files) {
            std::error_code error;
            if (file.ends_with('/')) {
                std::filesystem::create_directory(dir.file(file), error);
            } else {
                dir.write(file, "\n");
            }
            takes_all_names = takes_all_names && std::filesystem::exists(dir.file(file), error);
        }
        words expected;
        for (const std::string& word : rows[r].offered) {
            expected.push_back(in_folder(word));
        }
        if (takes_all_names) {  // Some file systems take no ';' or '"'.
            EXPECT_EQ(complete_words(in_folder(rows[r].before_cursor)).words, expected) << r;
        }
    }
}

TEST(status_line, shows_time_limit_and_figures_and_fits_the_terminal) {
    // clang-format off
    const struct { int64_t elapsed_ms; int32_t limit_ms; run_figures figures; const char* text; }
        rows[] = {
        {12449, 0, {}, "wattscope 12.4 s"}, {400, 1500, {}, "wattscope 0.4 s / 1.5 s"},
        {12400, 0, {24800, 0.00247, 0.0306},
         "wattscope 12.4 s: 24,800 samples, mean 2.47 mA, 30.6 mJ"},
        {0, 0, {1234567, {}, 2.0e-7}, "wattscope 0.0 s: 1,234,567 samples, 200 nJ"},
        {0, 0, {999, 0.0, 123.4}, "wattscope 0.0 s: 999 samples, mean 0.00 A, 123 J"}};
    // clang-format on
    for (const auto& row : rows) {
        EXPECT_EQ(describe_run("wattscope", row.elapsed_ms, row.limit_ms, row.figures), row.text);
    }
    // Width 0 is not known; the last column stays free.
    const std::pair<int32_t, const char*> widths[] = {
        {0, "wattscope 1.0 s"}, {16, "wattscope 1.0 s"}, {15, "wattscope 1.0 "}, {1, ""}};
    for (const auto& [width, shown] : widths) {
        EXPECT_EQ(fit_width("wattscope 1.0 s", width), shown) << width;
    }
}

TEST(history, keeps_the_last_lines_and_rewrites_a_file_grown_past_twice_or_escaped) {
    // clang-format off
    const struct { std::string text; std::size_t limit; words lines; bool rewrite; } rows[] = {
        {"help\r\n\n  \nquit", 3, {"help", "quit"}, false},
        {"a\nb\nc\nd\n", 2, {"c", "d"}, false}, {"a\nb\nc\nd\ne\n", 2, {"d", "e"}, true},
        {"_HiStOrY_V2_\nhelp\\040quit\\012\na\\\\b\\0\n", 5, {"help quit", "a\\b\\0"}, true}};
    // clang-format on
    for (const auto& row : rows) {
        const VX_UTL::history_text found = VX_UTL::parse_history(row.text, row.limit);
        EXPECT_EQ(found.lines, row.lines) << row.text;
        EXPECT_EQ(found.rewrite, row.rewrite) << row.text;
    }
}

}  // namespace
