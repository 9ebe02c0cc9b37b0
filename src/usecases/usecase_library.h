#pragma once

#include <string>

#include "utilities/udll.h"

// The one door to the use-case library: loads it at first need, with the
// directory of the probe-access libraries added to the library search, and
// finds its functions by name, also under a leading underscore. Throws
// std::runtime_error with the text that the shell prints.
//
// The load runs on the main thread, before any thread of a use case exists;
// look-ups come afterwards from any thread, once nothing here changes.
class usecase_library {
  public:
    // Loads the library if needed; a null name only loads and gives null.
    VX_UTL::uDll::symbol symbol(const char* name);

  private:
    void load();

    VX_UTL::uDll library{nullptr, -1};
    // The path of the last prefixed attempt; only the message of a failed
    // look-up reads it. Written by load alone.
    std::string use_case_library_path;
};

// Each use case has its own door to the same library, so using one does not
// load anything for the other.
VX_UTL::uDll::symbol wattscope_symbol(const char* name);
VX_UTL::uDll::symbol prodtest_symbol(const char* name);
