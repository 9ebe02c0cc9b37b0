#include "wattscope_sim/junit_report.h"

#include <cstdio>

namespace standin::sim {

namespace {

std::string escaped(const std::string& text) {
    std::string out;
    for (char c : text) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            default:
                out += c;
        }
    }
    return out;
}

}  // namespace

std::string junit_xml(const report_facts& facts) {
    size_t failures = 0;
    size_t errors = 0;
    for (const report_case& c : facts.cases) {
        failures += c.failure.empty() ? 0 : 1;
        errors += c.error.empty() ? 0 : 1;
    }
    char seconds[32];
    std::snprintf(seconds, sizeof seconds, "%.3f", facts.seconds);
    const std::string counts = "tests=\"" + std::to_string(facts.cases.size()) + "\" failures=\"" +
                               std::to_string(failures) + "\" errors=\"" + std::to_string(errors) +
                               "\" time=\"" + seconds + "\"";
    std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    xml += "<testsuites name=\"prodtest\" " + counts + ">\n";
    xml += "  <testsuite name=\"" + escaped(facts.suite) + "\" " + counts + ">\n";
    xml += "    <properties>\n";
    xml += "      <property name=\"target\" value=\"" + escaped(facts.target) + "\"/>\n";
    xml += "      <property name=\"board\" value=\"" + escaped(facts.board) + "\"/>\n";
    xml += "    </properties>\n";
    for (const report_case& c : facts.cases) {
        xml += "    <testcase classname=\"prodtest." + escaped(facts.target) + "\" name=\"" +
               escaped(c.name) + "\" time=\"" + seconds + "\"";
        if (!c.error.empty()) {
            xml += ">\n      <error message=\"" + escaped(c.error) + "\"/>\n    </testcase>\n";
        } else if (!c.failure.empty()) {
            xml += ">\n      <failure message=\"" + escaped(c.failure) +
                   "\" type=\"out of limits\"/>\n    </testcase>\n";
        } else {
            xml += "/>\n";
        }
    }
    xml += "  </testsuite>\n</testsuites>\n";
    return xml;
}

std::string report_path(const std::string& input) {
    const size_t slash = input.find_last_of('/');
    const size_t dot = input.find_last_of('.');
    const bool has_suffix =
        dot != std::string::npos && (slash == std::string::npos || dot > slash + 1);
    return (has_suffix ? input.substr(0, dot) : input) + ".junit.xml";
}

}  // namespace standin::sim
