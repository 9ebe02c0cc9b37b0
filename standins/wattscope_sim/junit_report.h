#pragma once

// The JUnit XML report of a production test, which CI systems show.

#include <string>
#include <vector>

namespace standin::sim {

struct report_case {
    std::string name;
    std::string failure;  // Empty when the parameter passed.
    std::string error;    // Set when it could not be judged.
};

struct report_facts {
    std::string suite;  // The test description's file name.
    std::string target;
    std::string board;
    double seconds = 0;  // Time measured.
    std::vector<report_case> cases;
};

std::string junit_xml(const report_facts& facts);

// "limits.txt" gives "limits.junit.xml", beside it.
std::string report_path(const std::string& input);

}  // namespace standin::sim
