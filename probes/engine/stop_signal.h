#pragma once

// How a use case learns that it is to end, and how it waits meanwhile. A stop
// may come from any thread, any number of times: before the run starts,
// during it, or after it returned.

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace standin::sim {

using clock = std::chrono::steady_clock;

class stop_signal {
  public:
    void request() {
        {
            // Taken so that a waiter between its test and its wait can't miss the wake-up.
            std::lock_guard<std::mutex> lock(mutex_);
            count_.fetch_add(1);
        }
        wake_.notify_all();
    }

    bool requested() const { return count() > 0; }
    // How many stops came so far: a capture that took one stop as its end
    // still ends at once on the next.
    uint32_t count() const { return count_.load(std::memory_order_relaxed); }

    // Sleeps until `when` or a stop beyond the first `seen`; true when the
    // time came without one.
    bool sleep_until(clock::time_point when, uint32_t seen = 0) {
        std::unique_lock<std::mutex> lock(mutex_);
        return !wake_.wait_until(lock, when, [this, seen] { return count_.load() > seen; });
    }

  private:
    std::atomic<uint32_t> count_{0};
    std::mutex mutex_;  // Guards nothing but the handover to a sleeper.
    std::condition_variable wake_;
};

}  // namespace standin::sim
