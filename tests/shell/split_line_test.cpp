#include "shell/split_line.h"

#include <gtest/gtest.h>

namespace {

struct split_case {
    const char* text;
    char separator;
    std::vector<std::string> fields;
};

class split_line_cases : public testing::TestWithParam<split_case> {};

TEST_P(split_line_cases, gives_the_fields) {
    const split_case& c = GetParam();
    EXPECT_EQ(split_line(c.text, c.separator), c.fields) << "text: [" << c.text << "]";
}

INSTANTIATE_TEST_SUITE_P(
    table, split_line_cases,
    testing::Values(
        split_case{"", ' ', {}}, split_case{"", ';', {}}, split_case{"   ", ' ', {}},
        split_case{";;", ';', {}}, split_case{"a;;b", ';', {"a", "b"}},
        split_case{";a;", ';', {"a"}}, split_case{"  a   b  ", ' ', {"a", "b"}},
        split_case{"\"a b\" c", ' ', {"a b", "c"}}, split_case{"\"a b\"c", ' ', {"a b", "c"}},
        split_case{"\"a\"\"b\"", ' ', {"a", "b"}}, split_case{"x\"a b\"", ' ', {"x\"a", "b\""}},
        split_case{"\"\"", ' ', {}}, split_case{"\"\" a", ' ', {"a"}},
        split_case{"\"a b", ' ', {"a b"}}, split_case{"\"", ' ', {}},
        split_case{"a;\"b;c\";d", ';', {"a", "b;c", "d"}},
        split_case{"\"a\" ;b", ';', {"a", " ", "b"}}, split_case{" \"\"", ';', {" \"\""}},
        split_case{" \"\"", ' ', {}}, split_case{"a\tb c", ' ', {"a\tb", "c"}},
        split_case{"x\\ y", ' ', {"x\\", "y"}}, split_case{"\"help\" quit", ';', {"help", " quit"}},
        split_case{"connect --device \"a;b\"", ';', {"connect --device \"a", "b\""}},
        split_case{
            "connect --config \"my dir/b.dat\"", ' ', {"connect", "--config", "my dir/b.dat"}}));

}  // namespace
