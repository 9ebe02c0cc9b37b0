#pragma once

// A use case whose run and stop a test shapes, and a record of what happened
// to it that outlives the command, which the queue deletes.

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>

#include "execution/zelno_command.h"

namespace fake {

// Blocks until `counter` is at least `value`; the fake notifies each change.
inline void await_at_least(const std::atomic<int>& counter, int value) {
    for (int seen = counter.load(); seen < value; seen = counter.load()) {
        counter.wait(seen);
    }
}

inline void bump(std::atomic<int>& counter) {
    ++counter;
    counter.notify_all();
}

constexpr int until_stopped = -1;

struct behaviour {
    int ends_after_ms = until_stopped;  // Else run returns by itself then.
    int32_t result = 0;
    int stops_needed = 1;              // Stops after which run returns.
    int stop_blocks_ms = 0;            // Time spent inside each stop, after it counted.
    bool stop_waits_for_gate = false;  // Each stop then blocks until stop_gate is true.
};

struct record {
    std::atomic<int> entered_run{0};
    std::atomic<int> stops{0};
    std::atomic<int> inside_stop{0};
    std::atomic<bool> stops_overlapped{false};
    std::atomic<bool> destroyed{false};
    std::atomic<int> start_order{0};  // Taken from a counter shared by a test.
    std::atomic<bool> stop_gate{false};
};

class command : public zelno_command {
  public:
    command(std::shared_ptr<record> into, behaviour how, std::atomic<int>* order_counter = nullptr)
        : seen(std::move(into)), shape(how), order(order_counter) {}
    ~command() override { seen->destroyed = true; }

    int32_t run() override {
        if (order != nullptr) {
            seen->start_order = ++*order;
        }
        bump(seen->entered_run);
        std::unique_lock<std::mutex> lock(mutex);
        const auto stopped = [this] { return stops_taken >= shape.stops_needed; };
        if (shape.ends_after_ms == until_stopped) {
            changed.wait(lock, stopped);
        } else {
            changed.wait_for(lock, std::chrono::milliseconds(shape.ends_after_ms), stopped);
        }
        return shape.result;
    }

    void stop() override {
        if (seen->inside_stop.fetch_add(1) != 0) {
            seen->stops_overlapped = true;
        }
        {
            const std::lock_guard<std::mutex> lock(mutex);
            ++stops_taken;
            changed.notify_all();
        }
        bump(seen->stops);
        std::this_thread::sleep_for(std::chrono::milliseconds(shape.stop_blocks_ms));
        if (shape.stop_waits_for_gate) {
            seen->stop_gate.wait(false);
        }
        --seen->inside_stop;
    }

  private:
    std::shared_ptr<record> seen;
    behaviour shape;
    std::atomic<int>* order;
    std::mutex mutex;
    std::condition_variable changed;
    int stops_taken = 0;  // Guarded by `mutex`.
};

}  // namespace fake
