#include "engine/junit_report.h"

#include <cstdint>
#include <cstdio>
#include <string_view>

namespace standin::sim {

namespace {

// Length of the UTF-8 sequence at `at` that XML 1.0 admits as one character,
// or 0: a malformed or overlong sequence, a surrogate, U+FFFE, U+FFFF, or a
// control character other than tab, line feed and carriage return.
size_t xml_char_length(std::string_view text, size_t at) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[at + i]); };
    const unsigned char lead = byte(0);
    if (lead < 0x80) {
        return lead >= 0x20 || lead == '\t' || lead == '\n' || lead == '\r' ? 1 : 0;
    }
    const size_t length = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : lead >= 0xc0 ? 2 : 0;
    if (length == 0 || lead > 0xf4 || at + length > text.size()) {
        return 0;
    }
    uint32_t code = lead & (0x7f >> length);
    for (size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xc0) != 0x80) {
            return 0;
        }
        code = code << 6 | (byte(i) & 0x3f);
    }
    const uint32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool allowed = code >= least[length] && code <= 0x10ffff &&
                         !(code >= 0xd800 && code <= 0xdfff) && code != 0xfffe && code != 0xffff;
    return allowed ? length : 0;
}

// Fit for an attribute value in double quotes. What XML can't hold (names
// may be any bytes) becomes U+FFFD, so the report stays well-formed.
std::string escaped(std::string_view text) {
    std::string out;
    for (size_t at = 0; at < text.size();) {
        const size_t length = xml_char_length(text, at);
        if (length == 0) {
            out += "\xef\xbf\xbd";
            ++at;
            continue;
        }
        switch (text[at]) {
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
            case '\t':  // An attribute would turn these into blanks.
                out += "&#9;";
                break;
            case '\n':
                out += "&#10;";
                break;
            case '\r':
                out += "&#13;";
                break;
            default:
                out.append(text, at, length);
        }
        at += length;
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
               escaped(c.name) + "\" time=\"" + seconds + "\">\n";
        if (!c.properties.empty()) {
            xml += "      <properties>\n";
            for (const auto& [name, value] : c.properties) {
                xml += "        <property name=\"" + escaped(name) + "\" value=\"" +
                       escaped(value) + "\"/>\n";
            }
            xml += "      </properties>\n";
        }
        if (!c.error.empty()) {
            xml += "      <error message=\"" + escaped(c.error) + "\"/>\n";
        } else if (!c.failure.empty()) {
            xml +=
                "      <failure message=\"" + escaped(c.failure) + "\" type=\"out of limits\"/>\n";
        }
        if (!c.output.empty()) {
            xml += "      <system-out>" + escaped(c.output) + "</system-out>\n";
        }
        xml += "    </testcase>\n";
    }
    xml += "  </testsuite>\n</testsuites>\n";
    return xml;
}

std::string report_path(const std::string& input, const std::string& chosen) {
    if (!chosen.empty()) {
        return chosen;
    }
    // A name's leading dot makes it hidden and is no suffix: ".hidden" gives
    // ".hidden.junit.xml". Windows separates folders with either slash.
    const size_t slash = input.find_last_of("/\\");
    const size_t name = slash == std::string::npos ? 0 : slash + 1;
    const size_t dot = input.find_last_of('.');
    const bool has_suffix = dot != std::string::npos && dot > name;
    return (has_suffix ? input.substr(0, dot) : input) + ".junit.xml";
}

}  // namespace standin::sim
