#pragma once

#include <cstdint>
#include <memory>

#include "utilities/urunnable.h"

namespace VX_UTL {

// One thread that runs a uRunnable it doesn't own. Created without a thread;
// start() makes one. The destructor releases the handle without waiting: a
// running thread goes on, and its runnable must outlive it.
class uThread {
public:
    uThread(uRunnable* runnable, int32_t priority, uint32_t stack_size);
    virtual ~uThread();
    uThread(const uThread&) = delete;
    uThread& operator=(const uThread&) = delete;

    // Creates the thread; handle, id and priority are in place before the
    // body's first step. False if the thread could not be created or started.
    bool start();
    // True if the thread has ended within `timeout_ms`. False before start().
    // May be called any number of times, also long after the end.
    bool wait(uint32_t timeout_ms);

private:
    struct platform_thread;
    uRunnable* runnable;
    std::shared_ptr<platform_thread> handle;  // Shared with the running thread.
    int32_t priority;
    uint32_t stack_size;
    uint64_t thread_id = 0;

    friend struct thread_entry_access;
};

}  // namespace VX_UTL
