#pragma once

// Units of the stand-ins' readable files: "3.3 V", "15 uA", "250ms", "2 %".

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "common/text_input.h"

namespace standin {

enum class dimension { voltage, current, time, resistance, energy, power, ratio };

struct unit {
    std::string_view symbol;
    dimension kind;
    int exponent;  // Power of ten of the unit: -3 for "mA", -2 for "%".
};

const unit* find_unit(std::string_view symbol);

// "V, mV or uV": for a message naming what would have been accepted.
std::string unit_choices(dimension kind);

// A quantity split into its number and its unit: "3.3 V" and "3.3V" alike.
struct quantity_text {
    std::string_view number;
    std::string_view unit;
};
quantity_text split_quantity(std::string_view text);

// The quantity as a whole number of 10^base_exponent units, exactly:
// "4.5 mA" with base -9 gives 4500000. A unit that doesn't fit `kind` is
// not_a_number; the caller tells it apart with find_unit when it matters.
fixed_number read_quantity(std::string_view text, dimension kind, int base_exponent);

// read_quantity's value, or empty for any problem.
std::optional<int64_t> parse_quantity(std::string_view text, dimension kind, int base_exponent);

}  // namespace standin
