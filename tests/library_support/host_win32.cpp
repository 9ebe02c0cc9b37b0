#include <windows.h>

#include "scratch_dir.h"

namespace standin_test {

const char* const null_device = "NUL";

// Two instances, as a look at a pipe's identity takes one (closed at exit).
std::string make_pipe(const scratch_dir& dir) {
    const std::string path =
        "\\\\.\\pipe\\" + std::filesystem::path(dir.file("")).parent_path().filename().string();
    ::CreateNamedPipeA(path.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE, 2, 0, 0, 0, nullptr);
    ::CreateNamedPipeA(path.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE, 2, 0, 0, 0, nullptr);
    return path;
}

// A named temporary beside the output, renamed over it.
bool temporaries_are_nameless() {
    return false;
}

bool with_file_size_limit(uint64_t, const std::function<void()>&) {
    return false;
}

}  // namespace standin_test
