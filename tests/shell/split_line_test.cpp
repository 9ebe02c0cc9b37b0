#include "shell/split_line.h"

#include <gtest/gtest.h>

namespace {

struct split_case {
    const char* name;
    const char* text;
    char separator;
    std::vector<std::string> fields;
};

// The case's name, not its bytes, in test listings.
void PrintTo(const split_case& c, std::ostream* out) {
    *out << c.name;
}

class split_line_cases : public testing::TestWithParam<split_case> {};

TEST_P(split_line_cases, gives_the_fields) {
    EXPECT_EQ(split_line(GetParam().text, GetParam().separator), GetParam().fields);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(table, split_line_cases, testing::Values(
    split_case{"empty", "", ' ', {}}, split_case{"edges", ";a;;b", ';', {"a", "b"}},
    split_case{"runs_of_blanks", "  a   b  ", ' ', {"a", "b"}},
    split_case{"quoted_field", "\"a b\" c", ' ', {"a b", "c"}},
    split_case{"closing_quote_ends_the_field", "\"a b\"c", ' ', {"a b", "c"}},
    split_case{"adjacent_quotes", "\"a\"\"b\"", ' ', {"a", "b"}},
    split_case{"quote_inside_a_word", "x\"a b\"", ' ', {"x\"a", "b\""}},
    split_case{"empty_quotes", "\"\" a", ' ', {"a"}}, split_case{"lone_quote", "\"", ' ', {}},
    split_case{"unclosed_quote", "\"a b", ' ', {"a b"}},
    split_case{"quoted_separator", "a;\"b;c\";d", ';', {"a", "b;c", "d"}},
    split_case{"blank_behind_a_quote", "\"a\" ;b", ';', {"a", " ", "b"}},
    split_case{"quote_behind_a_blank", " \"\"", ';', {" \"\""}},
    split_case{"tab_is_no_blank", "a\tb c", ' ', {"a\tb", "c"}},
    split_case{"no_escape", "x\\ y", ' ', {"x\\", "y"}},
    split_case{"quote_after_words", "log -o \"a;b\"", ';', {"log -o \"a", "b\""}}),
    [](const auto& row) { return std::string(row.param.name); });
// clang-format on

}  // namespace
