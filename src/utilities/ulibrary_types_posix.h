#pragma once

// The library's objects are the toolchain's own: see ulibrary_types.h.

#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace VX_UTL {

using uLibraryString = std::string;
using uLibrarySharedPtr = std::shared_ptr<void>;
using uLibraryStringArgument = std::string;

inline std::string_view text_of(const uLibraryString& text) noexcept {
    return text;
}

// A string to pass by value. The Itanium C++ ABI has the caller destroy the
// parameter after the call; the language gives that to the compiler.
class uStringArgument {
  public:
    explicit uStringArgument(std::string_view text) : text_(text) {}
    uLibraryStringArgument hand_over() noexcept { return std::move(text_); }

  private:
    std::string text_;
};

class uReceivedString {
  public:
    explicit uReceivedString(const uLibraryStringArgument& argument) noexcept : text_(argument) {}
    std::string_view text() const noexcept { return text_; }

  private:
    std::string_view text_;  // The parameter, alive for the call.
};

}  // namespace VX_UTL
