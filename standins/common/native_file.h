#pragma once

// The few file and console operations the stand-ins need, the same on every
// platform. Failures set errno, so that callers word every reason alike.
// Implemented in native_file_posix.cpp and native_file_win32.cpp.

#include <atomic>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace standin {

// An open file: a descriptor on POSIX, a HANDLE on Windows.
using file_handle = std::intptr_t;
inline constexpr file_handle no_file = -1;

enum class file_kind { regular, character, directory, other };

// What makes two names the same file: device and inode, or volume and index.
struct file_identity {
    uint64_t device = 0;
    uint64_t index = 0;
    auto operator<=>(const file_identity&) const = default;
};

// Opens without ever waiting (a FIFO or pipe would wait for its other end
// where no stop reaches) and without truncating. `kind` tells what it is;
// no_file with errno on failure.
file_handle open_for_output(const std::string& path, file_kind& kind);
file_handle open_for_input(const std::string& path, file_kind& kind);
// False with errno when closing reports a failed write.
bool close_file(file_handle file);

bool identity_of(file_handle file, file_identity& identity);
bool identity_of(const std::string& path, file_identity& identity);
// False once the open file has lost its last name.
bool has_name(file_handle file);

// Writes all of `data` at the file's end, retrying after a signal; `done`
// tells how much got written before a failure.
bool write_all(file_handle file, std::string_view data, size_t& done);
// Reads at the current position (read_some) or at `offset`, leaving the
// write position alone (read_at); -1 with errno on failure, 0 at the end.
int64_t read_some(file_handle file, char* into, size_t count);
int64_t read_at(file_handle file, uint64_t offset, char* into, size_t count);
bool truncate_file(file_handle file, uint64_t size);

// Appends bytes `from` to `to` of `in` to `out`, in the kernel where it can;
// stops with ECANCELED once `cancel` is set.
bool copy_range(file_handle in, file_handle out, uint64_t from, uint64_t to,
                const std::atomic<bool>* cancel);

// A new, empty file in the folder of `path`, open for reading and writing;
// no_file with errno when it can't be made. `name` stays empty while the
// file has none.
struct temp_file {
    file_handle file = no_file;
    std::string name;
};
temp_file create_temp_beside(const std::string& path);

// Puts the temporary file in place of `path`, replacing what is there, and
// closes `replaced`, a handle open on that file or no_file; false with errno
// when it can't, the temporary file then still open and `replaced` open on
// the old file if it can be. The temporary file stays open either way,
// writing at its end. (Windows can't replace a file that is open, so there
// `replaced` is closed first and opened again after a failure.)
bool publish_temp(temp_file& temp, const std::string& path, file_handle& replaced);

// Closes the temporary file and removes any name it has.
void discard_temp(temp_file& temp);

// Standard output and error of the process, one write per call, so that a
// text is not split by a line that the host prints from another thread.
void write_console(bool error_stream, std::string_view text);

}  // namespace standin
