#pragma once

// Writing a whole file so that a reader sees the old file or the new one,
// never half of one: the text goes to a temporary file beside the target,
// which is then renamed over it.

#include <cstddef>
#include <string>
#include <string_view>

namespace standin {

// On failure returns false with `error` worded "cannot write <path>: <reason>";
// no temporary file is left behind and an older file at `path` is untouched.
bool write_file_atomically(const std::string& path, std::string_view content, std::string& error);

// Creates a new, empty file beside `path` for reading and writing, named into
// `temp`; -1 with errno when it can't. The caller renames or removes it.
int create_temp_beside(const std::string& path, std::string& temp);

// Writes all of `data`, retrying after a signal. False with errno set when a
// write fails; `done` tells how much got written before.
bool write_all(int fd, std::string_view data, size_t& done);

}  // namespace standin
