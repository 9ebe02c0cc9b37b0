// Preloaded into zelno: lets the first ZELNO_THREADS_ALLOWED threads be
// created and refuses the others with EAGAIN, as a process limit does. The
// limit doesn't bind root, which the tests run as.
#include <dlfcn.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>

using create_function = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*entry)(void*), void* argument) {
    static std::atomic<long> created{0};
    static const long allowed = [] {
        const char* value = std::getenv("ZELNO_THREADS_ALLOWED");
        return value != nullptr ? std::atol(value) : -1L;
    }();
    if (allowed >= 0 && created.fetch_add(1) >= allowed) {
        return EAGAIN;
    }
    // The C library's, or a sanitizer's in front of it.
    static const auto next = reinterpret_cast<create_function>(dlsym(RTLD_NEXT, "pthread_create"));
    return next(thread, attributes, entry, argument);
}
