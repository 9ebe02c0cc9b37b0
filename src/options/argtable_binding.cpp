#include "options/argtable_binding.h"

#include <stdexcept>

namespace {

// The soname of Debian's libargtable2-0; its unversioned link comes only
// with the development files.
constexpr const char* library_base_name = "argtable2";
constexpr const char* library_abi_version = "0";

template <typename Slot>
void fill_slot(argtable_binding& binding, Slot& slot, const char* name) {
    if (slot != nullptr) {
        return;
    }
    slot = reinterpret_cast<Slot>(binding.find_argtable_symbol(name));
    if (slot == nullptr) {
        throw std::runtime_error("Symbol not found in " + binding.library_file + ": " + name);
    }
}

}  // namespace

argtable_binding::argtable_binding() {
    VX_UTL::uDll::versioned_library_file_name(library_file, library_base_name, library_abi_version);
}

void argtable_binding::bind_argtable() {
    if (initialised) {
        return;
    }
    // A bare name: the platform's own search, with no directory of ours.
    if (!library.load(library_file.c_str(), -1)) {
        throw std::runtime_error("Failed to load " + library_file);
    }
    // All twelve, even those no command calls: a library without one of
    // them is not the library we were built against.
    fill_slot(*this, arg_parse, "arg_parse");
    fill_slot(*this, arg_litn, "arg_litn");
    fill_slot(*this, arg_intn, "arg_intn");
    fill_slot(*this, arg_dbln, "arg_dbln");
    fill_slot(*this, arg_strn, "arg_strn");
    fill_slot(*this, arg_filen, "arg_filen");
    fill_slot(*this, arg_end, "arg_end");
    fill_slot(*this, arg_print_errors, "arg_print_errors");
    fill_slot(*this, arg_print_syntaxv, "arg_print_syntaxv");
    fill_slot(*this, arg_print_glossary, "arg_print_glossary");
    fill_slot(*this, arg_nullcheck, "arg_nullcheck");
    fill_slot(*this, arg_freetable, "arg_freetable");
    initialised = true;
}

VX_UTL::uDll::symbol argtable_binding::find_argtable_symbol(const char* name) {
    return library.get_decorated_symbol(name);
}

argtable_binding& get_argtable_binding() {
    static argtable_binding binding;
    binding.bind_argtable();
    return binding;
}
