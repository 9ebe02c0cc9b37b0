#pragma once

#include <stdexcept>
#include <string>

namespace VX_UTL {

// Root of the utilities' exceptions. The shell catches them as plain
// std::runtime_error; nothing catches this family by name.
class source_utilities_error : public std::runtime_error {
  public:
    explicit source_utilities_error(const std::string& text) : std::runtime_error(text) {}
};

}  // namespace VX_UTL
