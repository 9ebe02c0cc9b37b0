#include "engine/test_file.h"

#include <charconv>
#include <cmath>
#include <optional>
#include <set>

#include "common/text_input.h"
#include "common/units.h"

namespace standin::sim {

namespace {

struct parameter_kind {
    std::string_view name;
    test_parameter parameter;
    dimension kind;
};

constexpr parameter_kind parameters[] = {
    {"supply_voltage", test_parameter::supply_voltage, dimension::voltage},
    {"mean_current", test_parameter::mean_current, dimension::current},
    {"sleep_current", test_parameter::sleep_current, dimension::current},
    {"active_current", test_parameter::active_current, dimension::current},
    {"peak_current", test_parameter::peak_current, dimension::current},
    {"mean_power", test_parameter::mean_power, dimension::power},
    {"cycle_energy", test_parameter::cycle_energy, dimension::energy},
};

std::optional<double> number(std::string_view text) {
    double value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end || !std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}

std::string parameter_names() {
    std::string names;
    for (const parameter_kind& p : parameters) {
        names += names.empty() ? "" : ", ";
        names += p.name;
    }
    return names;
}

}  // namespace

test_description parse_test_description(std::string_view content, std::string_view file_name) {
    test_description description;
    std::set<std::string, std::less<>> seen;
    int last_line = 1;
    for (const text_line& line : meaningful_lines(content)) {
        last_line = line.number;
        auto fail = [&](const std::string& problem) { fail_at(file_name, line.number, problem); };
        const std::vector<std::string_view> words = split_words(line.text);
        const std::string_view key = words[0];
        if (!seen.insert(std::string(key)).second) {
            fail(std::string(key) + " is given twice");
        }
        if (key == "measure") {
            const std::optional<int64_t> us =
                words.size() == 2 || words.size() == 3
                    ? parse_quantity(line.text.substr(key.size()), dimension::time, -6)
                    : std::nullopt;
            if (!us || *us <= 0 || static_cast<double>(*us) > max_measure_s * 1e6) {
                fail("expected 'measure <time>' from 1 us to 1 hour, such as 'measure 2 s'");
            }
            description.measure_s = static_cast<double>(*us) * 1e-6;
            description.measure_text = trim(line.text.substr(key.size()));
            continue;
        }
        if (key == "rate") {
            const std::optional<int64_t> rate =
                words.size() == 2 ? parse_fixed(words[1], 0) : std::nullopt;
            if (!rate || *rate < 1 || *rate > max_test_rate) {
                fail("expected 'rate <samples per second>' from 1 to " +
                     std::to_string(max_test_rate));
            }
            description.rate = static_cast<int32_t>(*rate);
            continue;
        }
        if (key == "range") {
            if (words.size() != 2 || (words[1] != "lo" && words[1] != "hi")) {
                fail("expected 'range lo' or 'range hi'");
            }
            description.range = words[1];
            continue;
        }
        if (key == "report") {
            // The rest of the line, so that a path may hold blanks.
            description.report = trim(line.text.substr(key.size()));
            description.report_line = line.number;
            if (description.report.empty()) {
                fail("expected 'report <file>', where the JUnit report goes");
            }
            continue;
        }
        const parameter_kind* kind = nullptr;
        for (const parameter_kind& p : parameters) {
            kind = p.name == key ? &p : kind;
        }
        if (kind == nullptr) {
            fail("unknown parameter '" + std::string(key) + "'; parameters are " +
                 parameter_names() + ", and the lines 'measure', 'rate', 'range' and 'report'");
        }
        if (words.size() != 4) {
            fail(
                "expected '<parameter> <expected value> <tolerance> <unit>', such as "
                "'mean_current 2.5 10% mA'");
        }
        test_limit limit;
        limit.name = key;
        limit.parameter = kind->parameter;
        limit.line = line.number;
        limit.expected_text = words[1];
        limit.tolerance_text = words[2];
        limit.unit = words[3];
        const unit* u = find_unit(words[3]);
        if (u == nullptr || u->kind != kind->kind) {
            fail(std::string(key) + " is measured in " + unit_choices(kind->kind) + ", not '" +
                 std::string(words[3]) + "'");
        }
        limit.unit_scale = std::pow(10.0, u->exponent);
        const std::optional<double> expected = number(words[1]);
        if (!expected) {
            fail("the expected value '" + std::string(words[1]) + "' is no number");
        }
        limit.expected = *expected * limit.unit_scale;
        std::string_view tolerance = words[2];
        limit.relative = !tolerance.empty() && tolerance.back() == '%';
        if (limit.relative) {
            tolerance.remove_suffix(1);
        }
        const std::optional<double> amount = number(tolerance);
        // "-0" is no tolerance anyone means, and would show as "+/- -0 V".
        if (!amount || std::signbit(*amount)) {
            fail("the tolerance '" + std::string(words[2]) +
                 "' is no number of 0 or more, with or without '%'");
        }
        limit.tolerance = limit.relative ? *amount / 100.0 : *amount * limit.unit_scale;
        description.limits.push_back(std::move(limit));
    }
    if (description.limits.empty()) {
        fail_at(file_name, last_line, "no parameter to test; parameters are " + parameter_names());
    }
    return description;
}

}  // namespace standin::sim
