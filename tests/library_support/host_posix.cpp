#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>

#include "scratch_dir.h"

namespace standin_test {

const char* const null_device = "/dev/null";

std::string make_pipe(const scratch_dir& dir) {
    ::mkfifo(dir.file("fifo").c_str(), 0600);
    return dir.file("fifo");
}

bool temporaries_are_nameless() {
    return true;
}

bool with_file_size_limit(uint64_t bytes, const std::function<void()>& body) {
    rlimit old{};
    ::getrlimit(RLIMIT_FSIZE, &old);
    const auto old_handler = std::signal(SIGXFSZ, SIG_IGN);  // A failed write, not a signal.
    const rlimit small{bytes, old.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
    body();
    ::setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, old_handler);
    return true;
}

}  // namespace standin_test
