#include "wattscope_sim/fixed_format.h"

#include <gtest/gtest.h>

#include <string>

#include "wattscope_sim/row_format.h"

namespace {

using namespace standin::sim;

template <typename Put>
std::string text_of(Put put) {
    char buffer[64];
    return std::string(buffer, put(buffer));
}

TEST(fixed_format, whole_numbers_at_every_digit_count) {
    for (uint64_t power = 1;; power *= 10) {
        for (uint64_t v : {power, power - 1, power + 1}) {
            EXPECT_EQ(text_of([&](char* p) { return put_uint(p, v); }), std::to_string(v));
        }
        if (power > UINT64_MAX / 10) {
            break;
        }
    }
    EXPECT_EQ(text_of([](char* p) { return put_uint(p, UINT64_MAX); }), "18446744073709551615");
}

TEST(fixed_format, fixed_point_keeps_every_decimal) {
    const struct {
        int64_t value;
        const char* nine;  // With 9 decimals.
        const char* six;   // With 6 decimals.
    } cases[] = {{0, "0.000000000", "0.000000"},
                 {15000, "0.000015000", "0.015000"},
                 {-250, "-0.000000250", "-0.000250"},
                 {1234567890123, "1234.567890123", "1234567.890123"},
                 {INT64_MIN, "-9223372036.854775808", "-9223372036854.775808"}};
    for (const auto& c : cases) {
        EXPECT_EQ(text_of([&](char* p) { return put_fixed<9>(p, c.value); }), c.nine);
        EXPECT_EQ(text_of([&](char* p) { return put_fixed<6>(p, c.value); }), c.six);
    }
}

TEST(fixed_format, addresses_have_at_least_eight_digits) {
    EXPECT_EQ(text_of([](char* p) { return put_address(p, 0x400); }), "0x00000400");
    EXPECT_EQ(text_of([](char* p) { return put_address(p, 0x0800abcd); }), "0x0800abcd");
    EXPECT_EQ(text_of([](char* p) { return put_address(p, 0x123456789); }), "0x123456789");
}

// Time has the fewest decimals that still give each sample its own exact
// start; rates that divide no power of ten get two more than their digits.
TEST(row_format, time_decimals_follow_the_rate) {
    const std::pair<int32_t, int> cases[] = {{1, 3},       {1000, 3},    {2000, 4},    {3, 3},
                                             {7, 3},       {300, 5},     {1000000, 6}, {2000000, 7},
                                             {3000000, 9}, {10000000, 7}};
    for (const auto& [rate, decimals] : cases) {
        EXPECT_EQ(make_row_layout(false, false, rate).time_decimals, decimals) << rate;
    }
}

TEST(row_format, a_row_has_every_column_in_order) {
    const row_layout csv = make_row_layout(false, true, 2000);
    char buffer[256];
    char* end =
        put_row(buffer, csv, 2001, {1, 1}, {4'500'000, 3'297'750, 14'839'875, true}, 123'456'789);
    end = put_trace(end, csv, 0x08000802, "adc_read");
    EXPECT_EQ(std::string(buffer, end),
              "2001,1.0005,0.004500000,3.297750,0.014839875,0.123456789,1,0x08000802,adc_read");
    const row_layout gnuplot = make_row_layout(true, false, 3);
    end = put_row(buffer, gnuplot, 4, {1, 1}, {0, 3'300'000, 0, false}, 0);
    EXPECT_EQ(std::string(buffer, end), "4 1.333 0.000000000 3.300000 0.000000000 0.000000000 0");
}

}  // namespace
