#pragma once

// The JUnit XML report of a production test, which CI systems show.

#include <string>
#include <utility>
#include <vector>

namespace standin::sim {

struct report_case {
    std::string name;
    std::string failure;  // Empty when the parameter passed.
    std::string error;    // Set when it could not be judged.
    // Measured value and limits, for tools that chart them.
    std::vector<std::pair<std::string, std::string>> properties;
    std::string output;  // The judgement in words, shown beside the case.
};

struct report_facts {
    std::string suite;  // The test description's file name.
    std::string target;
    std::string board;
    double seconds = 0;  // Time measured.
    std::vector<report_case> cases;
};

std::string junit_xml(const report_facts& facts);

// `chosen` when the description names its report; else beside the
// description: "limits.txt" gives "limits.junit.xml".
std::string report_path(const std::string& input, const std::string& chosen);

}  // namespace standin::sim
