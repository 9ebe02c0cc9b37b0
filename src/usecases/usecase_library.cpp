#include "usecases/usecase_library.h"

#include <stdexcept>

#include "utilities/upath.h"

namespace {

constexpr const char* library_base_name = "wattscopestandalone";

// Where the vendor's probe-access libraries sit relative to the working
// directory in its installation; the use-case library needs them at load.
std::string dependency_directory() {
    std::string directory = "..";
    for (const char* piece : {"..", "..", "..", "common", "dblnk"}) {
        VX_UTL::uPath::append(directory, piece);
    }
    return directory;
}

}  // namespace

void usecase_library::load() {
    // Before the first attempt, so that every attempt sees the directory.
    VX_UTL::uDll::add_search_directory(dependency_directory());

    std::string file_name;
    VX_UTL::uDll::library_file_name(file_name, library_base_name);

    for (const char* directory : {"..", "wattscope"}) {
        use_case_library_path = directory;
        VX_UTL::uPath::append(use_case_library_path, file_name.c_str());
        if (library.load(use_case_library_path.c_str(), -1)) {
            return;
        }
    }
    // The platform's own search decides; the path keeps the second attempt.
    if (!library.load(file_name.c_str(), -1)) {
        throw std::runtime_error("Unable to load " + file_name + "\n");
    }
}

VX_UTL::uDll::symbol usecase_library::symbol(const char* name) {
    if (!library.is_loaded()) {
        load();
    }
    if (name == nullptr) {
        return nullptr;
    }
    if (const VX_UTL::uDll::symbol address = library.get_decorated_symbol(name)) {
        return address;
    }
    throw std::runtime_error("Function " + std::string(name) + " not found in " +
                             use_case_library_path + "\n");
}

VX_UTL::uDll::symbol wattscope_symbol(const char* name) {
    static usecase_library library;
    return library.symbol(name);
}

VX_UTL::uDll::symbol prodtest_symbol(const char* name) {
    static usecase_library library;
    return library.symbol(name);
}
