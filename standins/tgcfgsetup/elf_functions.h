#pragma once

// The functions of a firmware image, from its ELF file's symbol table.
// elf_functions_posix.cpp reads it with libelf; the Windows build has no
// libelf and refuses (elf_functions_win32.cpp).

#include <string>
#include <vector>

#include "common/board.h"

namespace standin {

// Function symbols with a size, in a section, with a name that a board file
// can hold; on a Cortex-M the Thumb bit of the address cleared. Of several
// symbols with one name (static functions in two files) a global one wins
// over a weak one over a local one, then the lowest address. Sorted by
// address. False with `problem` set to one line naming `path` and the reason.
bool read_elf_functions(const std::string& path, std::vector<code_region>& functions,
                        std::string& problem);

}  // namespace standin
