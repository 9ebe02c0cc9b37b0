#pragma once

#include <argtable2.h>

#include <string>

#include "utilities/udll.h"

// argtable2, loaded at run time: the executable does not link it. The header
// gives the published types; every call goes through these slots.
struct argtable_binding {
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

    // Loads the library and fills the empty slots; throws std::runtime_error
    // ("Failed to load ..." / "Symbol not found in ...: ...", no line end).
    void bind_argtable();
    VX_UTL::uDll::symbol find_argtable_symbol(const char* name);
};

// The one binding of the process, bound (or bound further) at every call.
argtable_binding& get_argtable_binding();
