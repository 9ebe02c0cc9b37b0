#include <pthread.h>
#include <sys/resource.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <condition_variable>
#include <cstddef>
#include <mutex>

#include "utilities/uplatform.h"
#include "utilities/uthread.h"

namespace VX_UTL {

// What the creator and the new thread share. Both hold it through a
// shared_ptr, so it lives until the later of the uThread and the thread.
// The thread is detached: nobody joins it, and `ended` stands in for the
// thread handle that a wait can test any number of times.
struct uThread::platform_thread {
    static void* entry(void* argument);

    uRunnable* runnable = nullptr;  // Set before the thread exists.
    std::mutex mutex;
    std::condition_variable changed;
    // Guarded by `mutex`. The new thread reports its id and then waits for
    // `resumed`, which is how a thread is held suspended here; `ended` is
    // set once the runnable has returned and is never touched again.
    uint64_t thread_id = 0;
    bool resumed = false;
    bool ended = false;
};

namespace {

// Linux gives each thread its own nice value; the new thread inherits its
// creator's. A positive priority asks for more CPU, a lower nice value.
// Raising needs a privilege; as on the other platform the result is not read.
void set_thread_priority(uint64_t thread_id, int32_t priority) {
    if (priority == 0) {
        return;
    }
    const auto who = static_cast<id_t>(thread_id);
    errno = 0;
    const int inherited = getpriority(PRIO_PROCESS, who);
    if (inherited == -1 && errno != 0) {
        return;
    }
    const int64_t wanted = static_cast<int64_t>(inherited) - priority;
    setpriority(PRIO_PROCESS, who, static_cast<int>(std::clamp<int64_t>(wanted, -20, 19)));
}

}  // namespace

void* uThread::platform_thread::entry(void* argument) {
    // Takes over the reference that start() handed to the new thread.
    const std::unique_ptr<std::shared_ptr<platform_thread>> handed(
        static_cast<std::shared_ptr<platform_thread>*>(argument));
    platform_thread& state = **handed;
    {
        std::unique_lock<std::mutex> lock(state.mutex);
        state.thread_id = uPlatform::current_thread_id();
        state.changed.notify_all();
        state.changed.wait(lock, [&state] { return state.resumed; });
    }
    if (state.runnable != nullptr) {
        state.runnable->run();
    }
    const std::lock_guard<std::mutex> lock(state.mutex);
    state.ended = true;
    state.changed.notify_all();
    return nullptr;
}

uThread::uThread(uRunnable* body, int32_t thread_priority, uint32_t thread_stack_size)
    : runnable(body), priority(thread_priority), stack_size(thread_stack_size) {}

uThread::~uThread() = default;

bool uThread::start() {
    if (handle != nullptr) {
        return false;
    }
    auto state = std::make_shared<platform_thread>();
    state->runnable = runnable;

    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0) {
        return false;
    }
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    if (stack_size != 0) {
        // Below the minimum the call would fail; the other platform rounds up.
        pthread_attr_setstacksize(&attributes,
                                  std::max<std::size_t>(stack_size, PTHREAD_STACK_MIN));
    }
    auto handed = std::make_unique<std::shared_ptr<platform_thread>>(state);
    pthread_t created;
    const int failed = pthread_create(&created, &attributes, &platform_thread::entry, handed.get());
    pthread_attr_destroy(&attributes);
    if (failed != 0) {
        return false;
    }
    handed.release();  // Now the new thread's.

    std::unique_lock<std::mutex> lock(state->mutex);
    state->changed.wait(lock, [&state] { return state->thread_id != 0; });
    thread_id = state->thread_id;
    handle = state;
    set_thread_priority(thread_id, priority);
    state->resumed = true;
    state->changed.notify_all();
    return true;
}

bool uThread::wait(uint32_t timeout_ms) {
    if (handle == nullptr) {
        return false;
    }
    platform_thread& state = *handle;
    const auto has_ended = [&state] { return state.ended; };
    std::unique_lock<std::mutex> lock(state.mutex);
    if (timeout_ms == infinite) {
        state.changed.wait(lock, has_ended);
        return true;
    }
    return state.changed.wait_for(lock, std::chrono::milliseconds(timeout_ms), has_ended);
}

}  // namespace VX_UTL
