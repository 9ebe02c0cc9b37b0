#include "tgcfgsetup/elf_functions.h"

namespace standin {

bool read_elf_functions(const std::string&, std::vector<code_region>&, std::string& problem) {
    problem =
        "firmware = needs libelf, which this build of the converter lacks; list the functions "
        "in [code]";
    return false;
}

}  // namespace standin
