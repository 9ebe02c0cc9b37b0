// A conversion library for the tests. "ok" writes the board file with what
// the test needs to see: the input it was given and the library search path
// at the time of the call. "fails" reports failure; "no_function" exports the
// function under another name.

#include <fstream>
#include <string>

#include "host.h"

#if defined(TGCFG_NO_FUNCTION)
#define CONVERT_NAME TGCFGToBoardConfigFileRenamed
#else
#define CONVERT_NAME TGCFGToBoardConfigFile
#endif

extern "C" int CONVERT_NAME(std::string target_file, std::string board_file) {
#if defined(TGCFG_FAILS)
    (void)target_file;
    (void)board_file;
    return 3;
#else
    std::ofstream board(board_file);
    board << "converted " << target_file << "\n"
          << "search " << library_search_path() << "\n";
    return board ? 0 : 1;
#endif
}
