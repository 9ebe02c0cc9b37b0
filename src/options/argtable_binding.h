#pragma once

#include <argtable2.h>

#include <string>

#include "utilities/udll.h"

// argtable2, loaded at run time: the executable does not link it. The header
// gives the published types; every call goes through these slots.
struct argtable_binding {
    // Names the library; loads nothing.
    argtable_binding();

    decltype(&::arg_parse) arg_parse = nullptr;
    decltype(&::arg_litn) arg_litn = nullptr;
    decltype(&::arg_intn) arg_intn = nullptr;
    decltype(&::arg_dbln) arg_dbln = nullptr;
    decltype(&::arg_strn) arg_strn = nullptr;
    decltype(&::arg_filen) arg_filen = nullptr;
    decltype(&::arg_end) arg_end = nullptr;
    decltype(&::arg_print_errors) arg_print_errors = nullptr;
    decltype(&::arg_print_syntaxv) arg_print_syntaxv = nullptr;
    decltype(&::arg_print_glossary) arg_print_glossary = nullptr;
    decltype(&::arg_nullcheck) arg_nullcheck = nullptr;
    decltype(&::arg_freetable) arg_freetable = nullptr;

    VX_UTL::uDll library{nullptr, -1};
    std::string library_file;
    bool initialised = false;

    // Loads the library and fills the empty slots in order; throws
    // std::runtime_error ("Failed to load ..." / "Symbol not found in ...:
    // ...", no line end). Remembers no failure: the next call loads anew if
    // nothing is held, and goes on at the first empty slot.
    void bind_argtable();
    // The name as it is, else with a leading underscore; null if neither.
    VX_UTL::uDll::symbol find_argtable_symbol(const char* name);
};

// The one binding of the process, bound (or bound further) at every call.
// Used by the parsing handlers, all on the main thread.
argtable_binding& get_argtable_binding();
