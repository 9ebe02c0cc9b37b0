#include "utilities/umutex.h"

#include "utilities/uplatform.h"

namespace VX_UTL {

bool uMutex::lock() {
    enter();
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
    leave();
    return true;
}

}  // namespace VX_UTL
