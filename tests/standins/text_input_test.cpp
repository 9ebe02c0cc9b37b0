#include "common/text_input.h"

#include <gtest/gtest.h>

#include <optional>

#include "common/units.h"

namespace {

using standin::dimension;

struct fixed_case {
    const char* text;
    int decimals;
    std::optional<int64_t> value;
};

class parse_fixed_cases : public testing::TestWithParam<fixed_case> {};

TEST_P(parse_fixed_cases, converts_exactly_or_refuses) {
    const fixed_case& c = GetParam();
    EXPECT_EQ(standin::parse_fixed(c.text, c.decimals), c.value) << c.text << " @" << c.decimals;
}

INSTANTIATE_TEST_SUITE_P(
    table, parse_fixed_cases,
    testing::Values(fixed_case{"4.5", 6, 4500000}, fixed_case{"3.3", 6, 3300000},
                    fixed_case{"0.000001", 6, 1}, fixed_case{"0.0000001", 6, std::nullopt},
                    fixed_case{"1.2500", 2, 125}, fixed_case{"7", 0, 7}, fixed_case{"7.", 3, 7000},
                    fixed_case{".5", 1, 5}, fixed_case{"-2.5", 1, -25}, fixed_case{"+2", 0, 2},
                    fixed_case{"", 0, std::nullopt}, fixed_case{".", 0, std::nullopt},
                    fixed_case{"-", 0, std::nullopt}, fixed_case{"1e3", 0, std::nullopt},
                    fixed_case{"1,5", 1, std::nullopt}, fixed_case{"1.2.3", 3, std::nullopt},
                    fixed_case{"9223372036854775807", 0, INT64_MAX},
                    fixed_case{"92233720368547758070", 0, std::nullopt},
                    fixed_case{"9223372036854775807", 1, std::nullopt}));

struct quantity_case {
    const char* text;
    dimension kind;
    int base;
    std::optional<int64_t> value;
};

class parse_quantity_cases : public testing::TestWithParam<quantity_case> {};

TEST_P(parse_quantity_cases, scales_to_the_base_unit) {
    const quantity_case& c = GetParam();
    EXPECT_EQ(standin::parse_quantity(c.text, c.kind, c.base), c.value) << c.text;
}

INSTANTIATE_TEST_SUITE_P(
    table, parse_quantity_cases,
    testing::Values(quantity_case{"3.3 V", dimension::voltage, -6, 3300000},
                    quantity_case{"3.3V", dimension::voltage, -6, 3300000},
                    quantity_case{"  1800 mV ", dimension::voltage, -6, 1800000},
                    quantity_case{"15 uA", dimension::current, -9, 15000},
                    quantity_case{"0.5 nA", dimension::current, -9, std::nullopt},
                    quantity_case{"250 ms", dimension::time, -6, 250000},
                    quantity_case{"2 %", dimension::ratio, -6, 20000},
                    quantity_case{"75%", dimension::ratio, -4, 7500},
                    quantity_case{"20 ppm", dimension::ratio, -4, std::nullopt},
                    quantity_case{"0.5 ohm", dimension::resistance, -3, 500},
                    quantity_case{"3.3", dimension::voltage, -6, std::nullopt},
                    quantity_case{"3.3 mA", dimension::voltage, -6, std::nullopt},
                    quantity_case{"3.3 kV", dimension::voltage, -6, std::nullopt},
                    quantity_case{"V", dimension::voltage, -6, std::nullopt}));

TEST(text_input, addresses_are_hexadecimal_or_decimal) {
    EXPECT_EQ(standin::parse_address("0x08000400"), 0x08000400u);
    EXPECT_EQ(standin::parse_address("0XfF"), 255u);
    EXPECT_EQ(standin::parse_address("4096"), 4096u);
    EXPECT_EQ(standin::parse_address("0x"), std::nullopt);
    EXPECT_EQ(standin::parse_address("0x12g"), std::nullopt);
    EXPECT_EQ(standin::parse_address("0x10000000000000000"), std::nullopt);
    EXPECT_EQ(standin::parse_address("-1"), std::nullopt);
}

TEST(text_input, lines_lose_comments_and_blanks_and_keep_their_numbers) {
    const auto lines = standin::meaningful_lines("# head\n\n  a = 1  # why\n\t\nb\r\n#\n");
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].number, 3);
    EXPECT_EQ(lines[0].text, "a = 1");
    EXPECT_EQ(lines[1].number, 5);
    EXPECT_EQ(lines[1].text, "b");
}

TEST(text_input, unit_choices_name_every_unit_of_a_kind) {
    EXPECT_EQ(standin::unit_choices(dimension::voltage), "V, mV or uV");
    EXPECT_EQ(standin::unit_choices(dimension::resistance), "ohm or mohm");
}

}  // namespace
