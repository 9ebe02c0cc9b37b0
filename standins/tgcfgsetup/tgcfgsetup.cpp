// The exported entry point of the target converter library. The arguments are C++ string
// objects that cross the library boundary by value, so the library is built
// with the same compiler and standard library as its caller.

#include <iostream>
#include <string>

#include "tgcfgsetup/converter.h"

extern "C" __attribute__((visibility("default"))) int TGCFGToBoardConfigFile(std::string input,
                                                                             std::string output) {
    return standin::convert_target_file(input, output, std::cerr);
}
