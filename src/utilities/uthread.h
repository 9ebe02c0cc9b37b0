#pragma once

#include <cstdint>
#include <memory>

#include "utilities/urunnable.h"

namespace VX_UTL {

// One thread that runs a uRunnable it doesn't own. Created without a thread;
// start() makes one. The destructor releases the handle without waiting: a
// running thread goes on, and its runnable must outlive it. What the thread
// itself needs lives in the shared handle, so destroying the uThread early
// frees nothing that the thread still uses.
class uThread {
  public:
    // wait() with this time-out has no limit.
    static constexpr uint32_t infinite = 0xFFFFFFFF;

    uThread(uRunnable* runnable, int32_t priority, uint32_t stack_size);
    virtual ~uThread();
    uThread(const uThread&) = delete;
    uThread& operator=(const uThread&) = delete;

    // Creates the thread; handle, id and priority are in place before the
    // body's first step. False if the thread could not be created or started,
    // and for a second start: an object runs at most one thread.
    bool start();
    // True if the thread has ended within `timeout_ms`. False before start().
    // May be called any number of times, also long after the end.
    bool wait(uint32_t timeout_ms);

  private:
    struct platform_thread;
    uRunnable* runnable;
    // Null until start() succeeds. Shared with the running thread.
    std::shared_ptr<platform_thread> handle;
    int32_t priority;        // 0 is normal; higher runs before lower.
    uint32_t stack_size;     // 0 is the platform's default.
    uint64_t thread_id = 0;  // Same numbering as uPlatform::current_thread_id.
};

}  // namespace VX_UTL
