// The exported entry point of the target converter library. Both arguments
// are strings passed by value, in the form of the caller's platform
// (utilities/ulibrary_types.h); the callee owns and destroys them, as a
// library built by the platform's own compiler does.

#include <iostream>
#include <string>

#include "tgcfgsetup/converter.h"
#include "utilities/ulibrary_types.h"

extern "C" __attribute__((visibility("default"))) int TGCFGToBoardConfigFile(
    VX_UTL::uLibraryStringArgument input, VX_UTL::uLibraryStringArgument output) {
    const VX_UTL::uReceivedString target_file(input);
    const VX_UTL::uReceivedString board_file(output);
    try {
        return standin::convert_target_file(std::string(target_file.text()),
                                            std::string(board_file.text()), std::cerr);
    } catch (const std::exception& e) {
        std::cerr << "tgcfgsetup: " << e.what() << std::endl;  // Nothing may leave the library.
    }
    return 1;
}
