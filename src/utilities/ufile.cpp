#include "utilities/ufile.h"

#include <filesystem>
#include <system_error>

namespace VX_UTL {

bool opens_without_waiting(const char* name) {
    std::error_code error;
    const std::filesystem::file_type type = std::filesystem::status(name, error).type();
    return type != std::filesystem::file_type::fifo && type != std::filesystem::file_type::socket;
}

bool is_same_file(const std::string& first, const std::string& second) {
    if (first.empty() || second.empty()) {
        return false;
    }
    std::error_code error;
    if (std::filesystem::equivalent(first, second, error)) {
        return true;
    }
    if (std::filesystem::exists(first, error) && std::filesystem::exists(second, error)) {
        return false;
    }
    // One is not there yet, and will be once written: the names decide.
    const auto place = [&error](const std::string& name) {
        return std::filesystem::weakly_canonical(std::filesystem::absolute(name, error), error);
    };
    const auto first_place = place(first);
    const auto second_place = place(second);
    return !error && first_place == second_place;
}

uFile::~uFile() {
    if (stream != nullptr) {
        std::fclose(stream);
    }
}

bool uFile::open(const char* name, const char* new_mode) {
    const uMutexLock guard(file_lock);
    if (stream != nullptr) {
        std::fclose(stream);
        stream = nullptr;
    }
    if (name != nullptr) {
        file_name = name;
    } else {
        file_name.clear();
    }
    mode = new_mode;
    if (name != nullptr && mode != nullptr && opens_without_waiting(name)) {
        stream = open_shared(name, mode);
    }
    is_open = stream != nullptr;
    return is_open;
}

std::size_t uFile::write(const void* data, std::size_t count) {
    const uMutexLock guard(file_lock);
    if (!is_open || data == nullptr) {
        return 0;
    }
    return std::fwrite(data, 1, count, stream);
}

bool uFile::flush() {
    const uMutexLock guard(file_lock);
    if (!is_open) {
        return false;
    }
    return std::fflush(stream) == 0;
}

}  // namespace VX_UTL
