#pragma once

// How a use case learns that it is to end, and how it waits meanwhile. A stop
// may come from any thread, any number of times: before the run starts,
// during it, or after it returned.

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>

namespace standin::sim {

using clock = std::chrono::steady_clock;

class stop_signal {
  public:
    void request() {
        {
            // Taken so that a waiter between its test and its wait can't miss the wake-up.
            std::lock_guard<std::mutex> lock(mutex_);
            requested_.store(true);
        }
        wake_.notify_all();
    }

    bool requested() const { return requested_.load(std::memory_order_relaxed); }

    // Sleeps until `when` or a stop; true when the time came without a stop.
    bool sleep_until(clock::time_point when) {
        std::unique_lock<std::mutex> lock(mutex_);
        return !wake_.wait_until(lock, when, [this] { return requested_.load(); });
    }

  private:
    std::atomic<bool> requested_{false};
    std::mutex mutex_;  // Guards nothing but the handover to a sleeper.
    std::condition_variable wake_;
};

}  // namespace standin::sim
