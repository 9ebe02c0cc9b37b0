#include <pthread.h>

#include "utilities/umutex.h"

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

void uMutex::enter() {
    pthread_mutex_lock(&critical_section->mutex);
}

void uMutex::leave() {
    pthread_mutex_unlock(&critical_section->mutex);
}

}  // namespace VX_UTL
