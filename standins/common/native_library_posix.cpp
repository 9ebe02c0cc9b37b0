#include <dlfcn.h>
#include <sys/resource.h>

#include "common/native_library.h"

namespace standin {

void* open_library(const std::string& base, std::string& error) {
    void* library = ::dlopen(("lib" + base + ".so").c_str(), RTLD_NOW);
    if (library == nullptr) {
        error = ::dlerror();
    }
    return library;
}

void* library_symbol(void* library, const char* name) {
    return ::dlsym(library, name);
}

int64_t process_cpu_ns() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    auto ns = [](const timeval& t) { return int64_t{t.tv_sec} * 1'000'000'000 + t.tv_usec * 1000; };
    return ns(usage.ru_utime) + ns(usage.ru_stime);
}

}  // namespace standin
