#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace standin::sim {

// "2.467 mA": four significant digits with an SI prefix from p to k.
std::string si_text(double value, std::string_view unit);

// "50 mA": whole nanoamperes in the largest unit that keeps them whole.
std::string current_text(int64_t na);

}  // namespace standin::sim
