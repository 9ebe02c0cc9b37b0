#pragma once

// Reading the stand-ins' small text files: comment-free lines with their
// numbers, words, exact decimal numbers, and one way to report a problem.

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace standin {

// A problem with an input file; what() is the whole message, worded
// "<file>:<line>: <problem>" or "cannot read <file>: <reason>".
class input_error : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

[[noreturn]] void fail_at(std::string_view file, int line, std::string_view problem);

// The whole file. Throws input_error naming the file and the system's reason,
// also for a directory, a FIFO or a device, which are never opened to wait.
std::string read_whole_file(const std::string& path);

struct text_line {
    int number;             // 1-based, as an editor shows it.
    std::string_view text;  // Without its comment ('#' to the end) and outer blanks.
};

// The lines of `content` that hold something besides blanks and a comment,
// past a leading byte-order mark. The views point into `content`.
std::vector<text_line> meaningful_lines(std::string_view content);

std::string_view trim(std::string_view text);
std::vector<std::string_view> split_words(std::string_view text);

enum class number_problem { none, not_a_number, too_fine, too_large };

struct fixed_number {
    int64_t value = 0;
    number_problem problem = number_problem::none;

    std::optional<int64_t> value_if_ok() const {
        return problem == number_problem::none ? std::optional<int64_t>(value) : std::nullopt;
    }
};

// "4.5" with 6 decimals gives 4500000, and so does "45e-1". Exact: no floating
// point, so a value converts the same way everywhere. `decimals` may be
// negative. Says why when the text is no decimal number, holds a digit finer
// than 10^-decimals, or does not fit in 64 bits.
fixed_number read_fixed(std::string_view text, int decimals);

// read_fixed without an exponent: a plain decimal number, or empty.
std::optional<int64_t> parse_fixed(std::string_view text, int decimals);

// "0x0800F000" (hexadecimal) or "4096" (decimal).
std::optional<uint64_t> parse_address(std::string_view text);

// A name is one word of letters, digits, '_', '-' and '.'.
bool is_name(std::string_view text);
// "<what> may hold letters, ...": the complaint about a word that is no name.
std::string name_problem(std::string_view what);

// The last element of a path.
std::string_view base_name(std::string_view path);

}  // namespace standin
