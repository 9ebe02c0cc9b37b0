#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "utilities/umutex.h"
#include "utilities/uplatform.h"

namespace VX_UTL {

struct uMutex::platform_lock {
    CRITICAL_SECTION section;
};

uMutex::uMutex() : critical_section(std::make_unique<platform_lock>()) {
    InitializeCriticalSection(&critical_section->section);
}

uMutex::~uMutex() {
    DeleteCriticalSection(&critical_section->section);
}

bool uMutex::lock() {
    EnterCriticalSection(&critical_section->section);
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
    LeaveCriticalSection(&critical_section->section);
    return true;
}

}  // namespace VX_UTL
