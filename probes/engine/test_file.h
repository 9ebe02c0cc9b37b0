#pragma once

// The test description of prodtest: how long to measure, and the limits of
// each measured parameter. docs/formats.md describes the file.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace standin::sim {

enum class test_parameter {
    supply_voltage,
    mean_current,
    sleep_current,
    active_current,
    peak_current,
    mean_power,
    cycle_energy,
};

struct test_limit {
    std::string name;
    test_parameter parameter;
    double expected = 0;   // In SI units (V, A, W, J).
    double tolerance = 0;  // In SI units, or a fraction of `expected` when relative.
    bool relative = false;
    std::string unit;           // As written; measured values are shown in it.
    double unit_scale = 1;      // SI value of one `unit`.
    std::string expected_text;  // As written, for the report.
    std::string tolerance_text;
    int line = 0;
};

struct test_description {
    double measure_s = 1.0;
    std::string measure_text = "1 s";  // As written, for messages.
    int32_t rate = 10'000;
    std::string range = "lo";
    std::string report;  // The JUnit report's path as written; empty: beside the file.
    int report_line = 0;
    std::vector<test_limit> limits;
};

inline constexpr double max_measure_s = 3600;
inline constexpr int32_t max_test_rate = 1'000'000;

// Throws input_error "<file_name>:<line>: <problem>" for a malformed file.
test_description parse_test_description(std::string_view content, std::string_view file_name);

}  // namespace standin::sim
