#include "common/text_input.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <limits>
#include <sstream>

namespace standin {

void fail_at(std::string_view file, int line, std::string_view problem) {
    std::string message(file);
    message += ':';
    message += std::to_string(line);
    message += ": ";
    message += problem;
    throw input_error(message);
}

std::string read_whole_file(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        throw input_error("cannot read " + path + ": " + std::strerror(errno));
    }
    std::ostringstream content;
    content << in.rdbuf();
    if (in.bad()) {
        throw input_error("cannot read " + path + ": read error");
    }
    return content.str();
}

std::string_view trim(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    const size_t last = text.find_last_not_of(blanks);
    return text.substr(first, last - first + 1);
}

std::vector<text_line> meaningful_lines(std::string_view content) {
    std::vector<text_line> lines;
    int number = 0;
    while (!content.empty()) {
        const size_t end = content.find('\n');
        std::string_view line = content.substr(0, end);
        content = end == std::string_view::npos ? std::string_view{} : content.substr(end + 1);
        ++number;
        line = trim(line.substr(0, line.find('#')));
        if (!line.empty()) {
            lines.push_back({number, line});
        }
    }
    return lines;
}

std::vector<std::string_view> split_words(std::string_view text) {
    std::vector<std::string_view> words;
    size_t at = 0;
    while (true) {
        at = text.find_first_not_of(" \t", at);
        if (at == std::string_view::npos) {
            return words;
        }
        const size_t end = text.find_first_of(" \t", at);
        words.push_back(text.substr(at, end == std::string_view::npos ? end : end - at));
        if (end == std::string_view::npos) {
            return words;
        }
        at = end;
    }
}

std::optional<int64_t> parse_fixed(std::string_view text, int decimals) {
    bool negative = false;
    if (!text.empty() && (text[0] == '-' || text[0] == '+')) {
        negative = text[0] == '-';
        text.remove_prefix(1);
    }
    const size_t point = text.find('.');
    const std::string_view whole = text.substr(0, point);
    const std::string_view fraction =
        point == std::string_view::npos ? std::string_view{} : text.substr(point + 1);
    if (whole.empty() && fraction.empty()) {
        return std::nullopt;
    }
    int64_t value = 0;
    auto push_digit = [&value](char c) {
        const int digit = c - '0';
        if (digit < 0 || digit > 9 || value > (std::numeric_limits<int64_t>::max() - digit) / 10) {
            return false;
        }
        value = value * 10 + digit;
        return true;
    };
    for (char c : whole) {
        if (!push_digit(c)) {
            return std::nullopt;
        }
    }
    for (int i = 0; i < static_cast<int>(fraction.size()) || i < decimals; ++i) {
        const char c = i < static_cast<int>(fraction.size()) ? fraction[i] : '0';
        if (i < decimals ? !push_digit(c) : c != '0') {
            return std::nullopt;  // No digit, too large, or finer than the unit holds.
        }
    }
    return negative ? -value : value;
}

std::optional<uint64_t> parse_address(std::string_view text) {
    int base = 10;
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        base = 16;
        text.remove_prefix(2);
    }
    if (text.empty() || text.size() > (base == 16 ? 16u : 19u)) {
        return std::nullopt;
    }
    uint64_t value = 0;
    for (char c : text) {
        int digit = 0;
        if (c >= '0' && c <= '9') {
            digit = c - '0';
        } else if (base == 16 && c >= 'a' && c <= 'f') {
            digit = c - 'a' + 10;
        } else if (base == 16 && c >= 'A' && c <= 'F') {
            digit = c - 'A' + 10;
        } else {
            return std::nullopt;
        }
        value = value * static_cast<uint64_t>(base) + static_cast<uint64_t>(digit);
    }
    return value;
}

bool is_name(std::string_view text) {
    if (text.empty()) {
        return false;
    }
    for (char c : text) {
        const bool ok = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                        (c >= '0' && c <= '9') || c == '_' || c == '-' || c == '.';
        if (!ok) {
            return false;
        }
    }
    return true;
}

std::string name_problem(std::string_view what) {
    return std::string(what) + " may hold letters, digits, '_', '-' and '.' only";
}

std::string_view base_name(std::string_view path) {
    const size_t slash = path.find_last_of('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

}  // namespace standin
