#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

namespace VX_UTL {

// Recursive lock that knows its owner: unlock by any thread but the holder is
// refused. The platform's lock object sits behind an opaque pointer so that
// no platform header leaks into users. Must be free when destroyed.
class uMutex {
  public:
    uMutex();
    virtual ~uMutex();
    uMutex(const uMutex&) = delete;
    uMutex& operator=(const uMutex&) = delete;

    bool lock();    // Blocks until held; always true.
    bool unlock();  // False, and nothing changes, unless the caller holds it.

  private:
    void enter();  // The platform's lock alone, in the platform's file.
    void leave();

    struct platform_lock;
    std::unique_ptr<platform_lock> critical_section;
    // Written only by the holder; read by any thread in unlock's owner test.
    std::atomic<int32_t> lock_count{0};
    std::atomic<uint64_t> owner_thread{0};
};

// Holds a uMutex for one scope, so that no way out forgets the unlock.
class uMutexLock {
  public:
    explicit uMutexLock(uMutex& mutex) : held(mutex) { held.lock(); }
    ~uMutexLock() { held.unlock(); }
    uMutexLock(const uMutexLock&) = delete;
    uMutexLock& operator=(const uMutexLock&) = delete;

  private:
    uMutex& held;
};

}  // namespace VX_UTL
