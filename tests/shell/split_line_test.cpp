#include "shell/split_line.h"

#include <gtest/gtest.h>

namespace {

TEST(split_line, gives_the_fields) {
    // clang-format off
    const struct { const char* text; char separator; std::vector<std::string> fields; } rows[] = {
        {"", ' ', {}}, {";a;;b", ';', {"a", "b"}}, {"  a   b  ", ' ', {"a", "b"}},
        {"\"a b\" c", ' ', {"a b", "c"}},
        {"\"a b\"c", ' ', {"a b", "c"}},  // The closing quote ends the field.
        {"\"a\"\"b\"", ' ', {"a", "b"}}, {"x\"a b\"", ' ', {"x\"a", "b\""}},
        {"\"\" a", ' ', {"a"}}, {"\"", ' ', {}}, {"\"a b", ' ', {"a b"}},  // Unclosed.
        {"a;\"b;c\";d", ';', {"a", "b;c", "d"}},
        {"\"a\" ;b", ';', {"a", " ", "b"}}, {" \"\"", ';', {" \"\""}},  // Quotes and blanks.
        {"a\tb c", ' ', {"a\tb", "c"}},  // A tab is no blank.
        {"x\\ y", ' ', {"x\\", "y"}},    // No escape.
        {"log -o \"a;b\"", ';', {"log -o \"a", "b\""}}};
    // clang-format on
    for (const auto& row : rows) {
        EXPECT_EQ(split_line(row.text, row.separator), row.fields) << row.text;
    }
}

}  // namespace
