#include <pthread.h>

#include "utilities/umutex.h"
#include "utilities/uplatform.h"

namespace VX_UTL {

struct uMutex::platform_lock {
    pthread_mutex_t mutex;
};

uMutex::uMutex() : critical_section(std::make_unique<platform_lock>()) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&critical_section->mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

uMutex::~uMutex() {
    pthread_mutex_destroy(&critical_section->mutex);
}

bool uMutex::lock() {
    pthread_mutex_lock(&critical_section->mutex);
    owner_thread.store(uPlatform::current_thread_id());
    lock_count.fetch_add(1);
    return true;
}

bool uMutex::unlock() {
    // A thread that doesn't hold the lock can't find its own id here, so a
    // refusal is always right, whatever the holder is doing meanwhile.
    if (owner_thread.load() != uPlatform::current_thread_id() || lock_count.load() < 1) {
        return false;
    }
    if (lock_count.fetch_sub(1) == 1) {
        owner_thread.store(0);
    }
    pthread_mutex_unlock(&critical_section->mutex);
    return true;
}

}  // namespace VX_UTL
