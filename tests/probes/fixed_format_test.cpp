#include "engine/fixed_format.h"

#include <gtest/gtest.h>

#include <string>

#include "engine/row_format.h"

namespace {

using namespace standin::sim;

template <typename Put>
std::string text_of(Put put) {
    char buffer[64];
    return std::string(buffer, put(buffer));
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

// The fewest decimals that give every sample its exact start, or digits + 2.
TEST(row_format, time_decimals_follow_the_rate) {
    const std::pair<int32_t, int> cases[] = {{1, 3},       {1000, 3},    {2000, 4},    {3, 3},
                                             {7, 3},       {300, 5},     {1000000, 6}, {2000000, 7},
                                             {3000000, 9}, {10000000, 7}};
    for (const auto& [rate, decimals] : cases) {
        EXPECT_EQ(make_row_layout(false, false, false, rate).time_decimals, decimals) << rate;
    }
}

}  // namespace
