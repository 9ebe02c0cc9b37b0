// A conversion library for the tests. "ok" writes the board file with what
// the test needs to see: the input it was given and the library search path
// at the time of the call. "fails" reports failure; "no_function" exports the
// function under another name. The two strings come by value, as objects
// whose bytes library_string_*.c reads and, as the callee, destroys: a fault
// in either shows in the board file, or in the name of the file written.

#include <fstream>
#include <string>

#include "host.h"
#include "library_string.h"

#if defined(TGCFG_NO_FUNCTION)
#define CONVERT_NAME TGCFGToBoardConfigFileRenamed
#else
#define CONVERT_NAME TGCFGToBoardConfigFile
#endif

namespace {

std::string text_or_fault(const unsigned char* object) {
    char text[1024];
    const char* fault = read_library_string(object, text, sizeof text);
    return fault != nullptr ? std::string("BAD ") + fault : text;
}

}  // namespace

// On every platform the ABI passes such an argument as the address of the
// caller's object.
extern "C" int CONVERT_NAME(unsigned char* target_file, unsigned char* board_file) {
    const std::string target = text_or_fault(target_file);
    const std::string board = text_or_fault(board_file);
    const char* target_freed = destroy_string_argument(target_file);
    const char* board_freed = destroy_string_argument(board_file);
#if defined(TGCFG_FAILS)
    (void)target_freed;
    (void)board_freed;
    return 3;
#else
    std::ofstream out(board);
    out << "converted " << target << "\n"
        << "search " << library_search_path() << "\n";
    for (const char* fault : {target_freed, board_freed}) {
        if (fault != nullptr) {
            out << "BAD " << fault << "\n";
        }
    }
    return out ? 0 : 1;
#endif
}
