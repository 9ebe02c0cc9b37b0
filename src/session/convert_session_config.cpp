#include <stdexcept>
#include <string>

#include "session/session.h"
#include "utilities/udll.h"
#include "utilities/ulibrary_types.h"
#include "utilities/upath.h"

namespace {

constexpr const char* library_base_name = "tgcfgsetup";
constexpr const char* function_name = "TGCFGToBoardConfigFile";
constexpr const char* board_file_name = "ws_board.dat";

// The library's one function: both strings cross as whole objects, owned
// and destroyed by the callee.
using convert_function = int (*)(VX_UTL::uLibraryStringArgument target_file,
                                 VX_UTL::uLibraryStringArgument board_file);

// Puts the probe-access directories behind the library search path, at every
// conversion, as the vendor's installation expects.
void extend_library_search() {
    using VX_UTL::uPath;
    std::string common = "..";
    for (const char* piece : {"..", "..", "..", "common"}) {
        uPath::append(common, piece);
    }
    std::string bin = common;
    uPath::append(bin, "bin");
    std::string dblnk = common;
    uPath::append(dblnk, "dblnk");
    VX_UTL::uDll::add_search_directory(bin);
    VX_UTL::uDll::add_search_directory(dblnk);
}

}  // namespace

void convert_session_config() {
    const std::string::size_type dot = session_config_file.rfind('.');
    const std::string suffix =
        dot == std::string::npos ? std::string() : session_config_file.substr(dot + 1);
    if (suffix == "dat") {
        return;
    }
    if (suffix != "tgcfg") {
        throw std::runtime_error("Incorrect connection file " + session_config_file +
                                 ". Must be a .dat or .tgcfg.\n");
    }

    // Loaded once, kept until the process ends.
    static VX_UTL::uDll tgcfg_library(nullptr, -1);
    extend_library_search();
    if (!tgcfg_library.is_loaded()) {
        std::string file_name;
        VX_UTL::uDll::library_file_name(file_name, library_base_name);
        if (!tgcfg_library.load(file_name.c_str(), -1)) {
            throw std::runtime_error("Unable to load " + file_name + "\n");
        }
    }
    VX_UTL::uDll::symbol function = tgcfg_library.get_symbol(function_name);
    if (function == nullptr) {
        throw std::runtime_error(std::string("Function ") + function_name + " not found\n");
    }
    VX_UTL::uStringArgument target_file(session_config_file);
    VX_UTL::uStringArgument board_file(board_file_name);
    const int result = reinterpret_cast<convert_function>(function)(target_file.hand_over(),
                                                                    board_file.hand_over());
    if (result != 0) {
        throw std::runtime_error("Could not convert TGCFG to Board Config file.\n");
    }
    session_config_file = board_file_name;
}
