#pragma once

#include <string>

namespace VX_UTL {

class uPath {
  public:
    // Appends `piece` to `path` with one platform separator between them, then
    // turns every foreign separator into the platform's and collapses runs of
    // separators into one, over the whole path. `piece` must not be null.
    static void append(std::string& path, const char* piece);
};

}  // namespace VX_UTL
