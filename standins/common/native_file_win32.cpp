#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <memory>

#include "common/native_file.h"

namespace standin {

namespace {

// Windows caps one ReadFile or WriteFile at a DWORD; stay well below.
constexpr size_t max_transfer = size_t{1} << 30;
constexpr size_t copy_chunk = 1024 * 1024;
// Everybody may read, write, rename and delete a file we hold open: the
// window rewrite renames a new file over an output that is still open.
constexpr DWORD share_all = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

HANDLE handle_of(file_handle file) {
    return reinterpret_cast<HANDLE>(file);
}

file_handle file_of(HANDLE handle) {
    return reinterpret_cast<file_handle>(handle);
}

// The errno of a Windows error, so that reasons read as on every platform.
int errno_of(DWORD error) {
    switch (error) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_NAME:
        case ERROR_BAD_NETPATH:
        case ERROR_INVALID_DRIVE:
            return ENOENT;
        case ERROR_ACCESS_DENIED:
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
        case ERROR_WRITE_PROTECT:
            return EACCES;
        case ERROR_FILE_EXISTS:
        case ERROR_ALREADY_EXISTS:
            return EEXIST;
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
            return ENOSPC;
        case ERROR_FILENAME_EXCED_RANGE:
            return ENAMETOOLONG;
        case ERROR_NOT_ENOUGH_MEMORY:
        case ERROR_OUTOFMEMORY:
            return ENOMEM;
        case ERROR_DIRECTORY:
            return ENOTDIR;
        case ERROR_PIPE_BUSY:
            return EBUSY;
        default:
            return EIO;
    }
}

void set_errno() {
    errno = errno_of(::GetLastError());
}

bool is_folder(const std::string& path) {
    const DWORD attributes = ::GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

file_kind kind_of(HANDLE handle) {
    switch (::GetFileType(handle)) {
        case FILE_TYPE_DISK: {
            BY_HANDLE_FILE_INFORMATION info{};
            if (::GetFileInformationByHandle(handle, &info) &&
                (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
                return file_kind::directory;
            }
            return file_kind::regular;
        }
        case FILE_TYPE_CHAR:
            return file_kind::character;
        default:
            return file_kind::other;  // Pipes, which would wait for their other end.
    }
}

file_handle open_checked(const std::string& path, DWORD access, DWORD disposition, DWORD flags,
                         file_kind& kind) {
    // A named pipe is never waited for here: CreateFileA fails at once when
    // no instance is free.
    const HANDLE handle = ::CreateFileA(path.c_str(), access, share_all, nullptr, disposition,
                                        FILE_ATTRIBUTE_NORMAL | flags, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        set_errno();
        return no_file;
    }
    kind = kind_of(handle);
    return file_of(handle);
}

bool write_some(HANDLE handle, const char* data, size_t count, DWORD& written) {
    const auto want = static_cast<DWORD>(std::min(count, max_transfer));
    if (::GetFileType(handle) != FILE_TYPE_DISK) {
        return ::WriteFile(handle, data, want, &written, nullptr) != 0;
    }
    // At the end of the file, whatever the position: a rewrite reads the same
    // handle from another thread, and each read moves the position.
    OVERLAPPED at_end{};
    at_end.Offset = 0xFFFFFFFF;
    at_end.OffsetHigh = 0xFFFFFFFF;
    return ::WriteFile(handle, data, want, &written, &at_end) != 0;
}

std::string temp_name(const std::string& path) {
    static std::atomic<unsigned> counter{0};
    return path + ".tmp-" + std::to_string(::GetCurrentProcessId()) + "-" +
           std::to_string(counter++);
}

}  // namespace

file_handle open_for_output(const std::string& path, file_kind& kind) {
    // What exists is opened as it is: a pipe refuses to be opened "always".
    constexpr DWORD access = GENERIC_READ | GENERIC_WRITE;
    file_handle file = open_checked(path, access, OPEN_EXISTING, 0, kind);
    if (file == no_file && errno == ENOENT) {
        file = open_checked(path, access, OPEN_ALWAYS, 0, kind);
    }
    // Asked only now: looking a pipe's attributes up takes its free instance.
    if (file == no_file && errno == EACCES && is_folder(path)) {
        errno = EISDIR;  // CreateFileA only says that access is denied.
    }
    return file;
}

file_handle open_for_input(const std::string& path, file_kind& kind) {
    // Backup semantics open a folder too, so that it is refused as one.
    return open_checked(path, GENERIC_READ, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, kind);
}

bool close_file(file_handle file) {
    if (::CloseHandle(handle_of(file)) == 0) {
        set_errno();
        return false;
    }
    return true;
}

bool identity_of(file_handle file, file_identity& identity) {
    // The volume and the file index: MinGW's st_ino is always 0.
    BY_HANDLE_FILE_INFORMATION info{};
    if (::GetFileInformationByHandle(handle_of(file), &info) == 0) {
        set_errno();
        return false;
    }
    identity = {info.dwVolumeSerialNumber,
                (uint64_t{info.nFileIndexHigh} << 32) | info.nFileIndexLow};
    return true;
}

bool identity_of(const std::string& path, file_identity& identity) {
    const HANDLE handle = ::CreateFileA(path.c_str(), 0, share_all, nullptr, OPEN_EXISTING,
                                        FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        set_errno();
        return false;
    }
    const bool known = identity_of(file_of(handle), identity);
    ::CloseHandle(handle);
    return known;
}

bool has_name(file_handle file) {
    // A deleted file that is still open keeps its name until the last handle
    // closes, marked as pending deletion.
    FILE_STANDARD_INFO info{};
    return ::GetFileInformationByHandleEx(handle_of(file), FileStandardInfo, &info, sizeof info) &&
           !info.DeletePending && info.NumberOfLinks > 0;
}

bool write_all(file_handle file, std::string_view data, size_t& done) {
    done = 0;
    while (done < data.size()) {
        DWORD written = 0;
        if (!write_some(handle_of(file), data.data() + done, data.size() - done, written)) {
            set_errno();
            return false;
        }
        if (written == 0) {
            errno = EIO;  // A write that takes nothing would loop forever.
            return false;
        }
        done += written;
    }
    return true;
}

int64_t read_some(file_handle file, char* into, size_t count) {
    DWORD got = 0;
    if (::ReadFile(handle_of(file), into, static_cast<DWORD>(std::min(count, max_transfer)), &got,
                   nullptr) == 0) {
        if (::GetLastError() == ERROR_BROKEN_PIPE) {
            return 0;
        }
        set_errno();
        return -1;
    }
    return got;
}

int64_t read_at(file_handle file, uint64_t offset, char* into, size_t count) {
    OVERLAPPED at{};
    at.Offset = static_cast<DWORD>(offset);
    at.OffsetHigh = static_cast<DWORD>(offset >> 32);
    DWORD got = 0;
    if (::ReadFile(handle_of(file), into, static_cast<DWORD>(std::min(count, max_transfer)), &got,
                   &at) == 0) {
        if (::GetLastError() == ERROR_HANDLE_EOF) {
            return 0;
        }
        set_errno();
        return -1;
    }
    return got;
}

bool truncate_file(file_handle file, uint64_t size) {
    FILE_END_OF_FILE_INFO end{};
    end.EndOfFile.QuadPart = static_cast<LONGLONG>(size);
    if (::SetFileInformationByHandle(handle_of(file), FileEndOfFileInfo, &end, sizeof end) == 0) {
        set_errno();
        return false;
    }
    return true;
}

bool copy_range(file_handle in, file_handle out, uint64_t from, uint64_t to,
                const std::atomic<bool>* cancel) {
    static thread_local std::unique_ptr<char[]> chunk;
    if (!chunk) {
        chunk = std::make_unique<char[]>(copy_chunk);
    }
    while (from < to) {
        if (cancel != nullptr && cancel->load(std::memory_order_relaxed)) {
            errno = ECANCELED;
            return false;
        }
        const int64_t got = read_at(in, from, chunk.get(),
                                    static_cast<size_t>(std::min<uint64_t>(to - from, copy_chunk)));
        if (got <= 0) {
            errno = got == 0 ? EIO : errno;
            return false;
        }
        size_t done = 0;
        if (!write_all(out, std::string_view(chunk.get(), static_cast<size_t>(got)), done)) {
            return false;
        }
        from += static_cast<uint64_t>(got);
    }
    return true;
}

temp_file create_temp_beside(const std::string& path) {
    // Windows has no unnamed file that can later take a name: the temporary
    // file is named from the start, and a process killed while writing it
    // leaves it behind.
    temp_file temp;
    for (int attempt = 0; attempt < 100 && temp.file == no_file; ++attempt) {
        temp.name = temp_name(path);
        const HANDLE handle =
            ::CreateFileA(temp.name.c_str(), GENERIC_READ | GENERIC_WRITE, share_all, nullptr,
                          CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (handle != INVALID_HANDLE_VALUE) {
            temp.file = file_of(handle);
        } else if (::GetLastError() != ERROR_FILE_EXISTS) {
            break;
        }
    }
    if (temp.file == no_file) {
        set_errno();
        temp.name.clear();
    }
    return temp;
}

bool publish_temp(temp_file& temp, const std::string& path, file_handle& replaced) {
    if (replaced != no_file) {
        ::CloseHandle(handle_of(replaced));
        replaced = no_file;
    }
    if (::MoveFileExA(temp.name.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING) == 0) {
        set_errno();
        const int reason = errno;
        file_kind kind = file_kind::other;
        replaced = open_for_output(path, kind);  // Keep writing the old file, if it is still there.
        errno = reason;
        return false;
    }
    temp.name.clear();
    return true;  // Writes go to the end of the file: no position to move.
}

void discard_temp(temp_file& temp) {
    if (temp.file != no_file) {
        ::CloseHandle(handle_of(temp.file));
        temp.file = no_file;
    }
    if (!temp.name.empty()) {
        ::DeleteFileA(temp.name.c_str());
        temp.name.clear();
    }
}

void write_console(bool error_stream, std::string_view text) {
    const HANDLE handle = ::GetStdHandle(error_stream ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE);
    size_t done = 0;
    if (handle != nullptr && handle != INVALID_HANDLE_VALUE) {
        write_all(file_of(handle), text, done);  // Nobody to tell when the console is gone.
    }
}

}  // namespace standin
