#pragma once

#include <string>
#include <string_view>

namespace standin::sim {

// "2.467 mA": four significant digits with an SI prefix from p to k.
std::string si_text(double value, std::string_view unit);

}  // namespace standin::sim
