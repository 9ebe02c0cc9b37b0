#include "common/units.h"

#include <vector>

#include "common/text_input.h"

namespace standin {

namespace {

constexpr unit units[] = {
    {"V", dimension::voltage, 0},      {"mV", dimension::voltage, -3},
    {"uV", dimension::voltage, -6},    {"A", dimension::current, 0},
    {"mA", dimension::current, -3},    {"uA", dimension::current, -6},
    {"nA", dimension::current, -9},    {"s", dimension::time, 0},
    {"ms", dimension::time, -3},       {"us", dimension::time, -6},
    {"ohm", dimension::resistance, 0}, {"mohm", dimension::resistance, -3},
    {"J", dimension::energy, 0},       {"mJ", dimension::energy, -3},
    {"uJ", dimension::energy, -6},     {"nJ", dimension::energy, -9},
    {"W", dimension::power, 0},        {"mW", dimension::power, -3},
    {"uW", dimension::power, -6},      {"nW", dimension::power, -9},
    {"%", dimension::ratio, -2},       {"ppm", dimension::ratio, -6},
};

}  // namespace

const unit* find_unit(std::string_view symbol) {
    for (const unit& u : units) {
        if (u.symbol == symbol) {
            return &u;
        }
    }
    return nullptr;
}

std::string unit_choices(dimension kind) {
    std::vector<std::string_view> symbols;
    for (const unit& u : units) {
        if (u.kind == kind) {
            symbols.push_back(u.symbol);
        }
    }
    std::string names;
    for (size_t i = 0; i < symbols.size(); ++i) {
        names += i == 0 ? "" : i + 1 == symbols.size() ? " or " : ", ";
        names += symbols[i];
    }
    return names;
}

quantity_text split_quantity(std::string_view text) {
    text = trim(text);
    const auto digit = [&text](size_t at) {
        return at < text.size() && text[at] >= '0' && text[at] <= '9';
    };
    size_t end = 0;
    if (end < text.size() && (text[end] == '-' || text[end] == '+')) {
        ++end;
    }
    while (digit(end) || (end < text.size() && text[end] == '.')) {
        ++end;
    }
    // An exponent belongs to the number: "1e-3 V". No unit begins with 'e'.
    if (end < text.size() && (text[end] == 'e' || text[end] == 'E')) {
        size_t after = end + 1;
        if (after < text.size() && (text[after] == '-' || text[after] == '+')) {
            ++after;
        }
        if (digit(after)) {
            for (end = after; digit(end); ++end) {
            }
        }
    }
    return {text.substr(0, end), trim(text.substr(end))};
}

fixed_number read_quantity(std::string_view text, dimension kind, int base_exponent) {
    const quantity_text parts = split_quantity(text);
    const unit* u = find_unit(parts.unit);
    if (u == nullptr || u->kind != kind) {
        return {0, number_problem::not_a_number};
    }
    return read_fixed(parts.number, u->exponent - base_exponent);
}

std::optional<int64_t> parse_quantity(std::string_view text, dimension kind, int base_exponent) {
    return read_quantity(text, kind, base_exponent).value_if_ok();
}

}  // namespace standin
