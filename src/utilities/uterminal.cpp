#include "utilities/uterminal.h"

#include <deque>
#include <utility>

namespace VX_UTL {

namespace {

// Older zelno saved the history with blanks and backslashes escaped as
// octal ("help\040quit") under this first line.
constexpr std::string_view escaped_header = "_HiStOrY_V2_";

std::string unescape(std::string_view line) {
    std::string out;
    for (std::size_t at = 0; at < line.size(); ++at) {
        const auto octal = [&](std::size_t i) { return line[i] >= '0' && line[i] <= '7'; };
        if (line[at] == '\\' && at + 3 < line.size() && octal(at + 1) && octal(at + 2) &&
            octal(at + 3)) {
            out += static_cast<char>((line[at + 1] - '0') * 64 + (line[at + 2] - '0') * 8 +
                                     (line[at + 3] - '0'));
            at += 3;
        } else if (line[at] == '\\' && at + 1 < line.size() && line[at + 1] == '\\') {
            out += '\\';
            ++at;
        } else {
            out += line[at];
        }
    }
    return out;
}

}  // namespace

history_text parse_history(std::string_view text, std::size_t limit) {
    history_text result;
    bool escaped = false;
    if (text.starts_with(escaped_header) &&
        (text.size() == escaped_header.size() || text[escaped_header.size()] == '\n')) {
        escaped = true;
        result.rewrite = true;
        text.remove_prefix(std::min(text.size(), escaped_header.size() + 1));
    }
    std::deque<std::string> kept;
    std::size_t count = 0;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        ++count;
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        if (line.find_first_not_of(" \t") == std::string_view::npos) {
            continue;
        }
        std::string entry = escaped ? unescape(line) : std::string(line);
        while (entry.ends_with('\n')) {
            entry.pop_back();  // The escaped form kept the line feed.
        }
        kept.push_back(std::move(entry));
        if (kept.size() > limit) {
            kept.pop_front();
        }
    }
    result.rewrite = result.rewrite || count > 2 * limit;
    result.lines.assign(kept.begin(), kept.end());
    return result;
}

}  // namespace VX_UTL
