#pragma once

// Writing a whole file so that a reader sees the old file or the new one,
// never half of one: the text goes to a temporary file beside the target,
// which is then renamed over it.

#include <string>
#include <string_view>

#include "common/native_file.h"

namespace standin {

// On failure returns false with `error` worded "cannot write <path>: <reason>";
// no temporary file is left behind and an older file at `path` is untouched.
bool write_file_atomically(const std::string& path, std::string_view content, std::string& error);

}  // namespace standin
