#include "common/text_input.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

#include "common/native_file.h"

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
    const auto failure = [&path](std::string_view reason) {
        return input_error("cannot read " + path + ": " + std::string(reason));
    };
    // Anything but a regular file is refused before reading; opening never
    // waits, as a FIFO would for a writer where no stop reaches it.
    file_kind kind = file_kind::other;
    const file_handle file = open_for_input(path, kind);
    if (file == no_file) {
        throw failure(std::strerror(errno));
    }
    struct closer {
        file_handle file;
        ~closer() { close_file(file); }
    } const guard{file};
    if (kind == file_kind::directory) {
        throw failure(std::strerror(EISDIR));
    }
    if (kind != file_kind::regular) {
        throw failure("Not a regular file");
    }
    std::string content;
    char buffer[1 << 16];
    while (true) {
        const int64_t n = read_some(file, buffer, sizeof buffer);
        if (n < 0) {
            throw failure(std::strerror(errno));
        }
        if (n == 0) {
            return content;
        }
        content.append(buffer, static_cast<size_t>(n));
    }
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
    // Notepad and PowerShell start UTF-8 text with a byte-order mark.
    constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
    if (content.starts_with(byte_order_mark)) {
        content.remove_prefix(byte_order_mark.size());
    }
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

fixed_number read_fixed(std::string_view text, int decimals) {
    fixed_number result;
    bool negative = false;
    if (!text.empty() && (text[0] == '-' || text[0] == '+')) {
        negative = text[0] == '-';
        text.remove_prefix(1);
    }
    const size_t e = text.find_first_of("eE");
    int64_t shift = decimals;
    if (e != std::string_view::npos) {
        const std::string_view exponent = text.substr(e + 1);
        const fixed_number power = exponent.find_first_of("eE.") == std::string_view::npos
                                       ? read_fixed(exponent, 0)
                                       : fixed_number{0, number_problem::not_a_number};
        if (power.problem == number_problem::not_a_number) {
            return power;
        }
        // Clamped: a larger power can only overflow, or only be too fine.
        const bool down = !exponent.empty() && exponent[0] == '-';
        shift += power.problem == number_problem::too_large
                     ? (down ? -1000 : 1000)
                     : std::clamp<int64_t>(power.value, -1000, 1000);
        text = text.substr(0, e);
    }
    const size_t point = text.find('.');
    const std::string_view whole = text.substr(0, point);
    std::string_view fraction =
        point == std::string_view::npos ? std::string_view{} : text.substr(point + 1);
    std::string digits(whole);
    digits += fraction;
    shift -= static_cast<int64_t>(fraction.size());
    if (digits.empty() || digits.find_first_not_of("0123456789") != std::string::npos) {
        return {0, number_problem::not_a_number};
    }
    // Zeros below the unit cost nothing; any other digit there is finer than it.
    while (shift < 0 && !digits.empty() && digits.back() == '0') {
        digits.pop_back();
        ++shift;
    }
    if (shift < 0 && digits.find_first_not_of('0') != std::string::npos) {
        return {0, number_problem::too_fine};
    }
    constexpr int64_t max = std::numeric_limits<int64_t>::max();
    int64_t value = 0;
    for (char c : digits) {
        const int digit = c - '0';
        if (value > (max - digit) / 10) {
            return {0, number_problem::too_large};
        }
        value = value * 10 + digit;
    }
    for (; shift > 0 && value != 0; --shift) {
        if (value > max / 10) {
            return {0, number_problem::too_large};
        }
        value *= 10;
    }
    result.value = negative ? -value : value;
    return result;
}

std::optional<int64_t> parse_fixed(std::string_view text, int decimals) {
    if (text.find_first_of("eE") != std::string_view::npos) {
        return std::nullopt;
    }
    return read_fixed(text, decimals).value_if_ok();
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
    const size_t slash = path.find_last_of("/\\");  // Windows takes either.
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

}  // namespace standin
