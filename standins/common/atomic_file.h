#pragma once

// Writing a whole file so that a reader sees the old file or the new one,
// never half of one: the text goes to a temporary file beside the target,
// which is then renamed over it. Where the file system allows, the temporary
// file has no name until the moment it is renamed, so a process killed while
// writing it leaves nothing behind.

#include <cstddef>
#include <string>
#include <string_view>

namespace standin {

// On failure returns false with `error` worded "cannot write <path>: <reason>";
// no temporary file is left behind and an older file at `path` is untouched.
bool write_file_atomically(const std::string& path, std::string_view content, std::string& error);

// A new, empty file in the folder of `path`, open for reading and writing;
// fd -1 with errno when it can't be made. `name` stays empty while the file
// has none.
struct temp_file {
    int fd = -1;
    std::string name;
};
temp_file create_temp_beside(const std::string& path);

// Puts the temporary file in place of `path`; false with errno when it
// can't, the temporary file then still open. The fd stays open either way.
bool publish_temp(temp_file& temp, const std::string& path);

// Closes the temporary file and removes any name it has.
void discard_temp(temp_file& temp);

// Writes all of `data`, retrying after a signal. False with errno set when a
// write fails; `done` tells how much got written before.
bool write_all(int fd, std::string_view data, size_t& done);

}  // namespace standin
