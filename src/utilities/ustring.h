#pragma once

#include <cstdint>
#include <string>

#include "utilities/uerror.h"

namespace VX_UTL {

class uString {
  public:
    class error : public source_utilities_error {
      public:
        explicit error(const std::string& text) : source_utilities_error(text) {}
    };

    // Replaces every occurrence of `from` in `text`; see ustring.cpp for the
    // rule by which the search resumes. Throws uString::error on a null
    // argument. An empty `from` changes nothing.
    static const char* replace(std::string& text, const char* from, const char* to);

    // Renders `value` with a printf format holding one integer conversion
    // ("%d" when null), replacing or appending to `text`. Cut at 1023 bytes.
    static const char* format_int(int32_t value, std::string& text, bool append,
                                  const char* format);
};

}  // namespace VX_UTL
