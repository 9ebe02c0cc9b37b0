// Where no transcript reaches: races between stops, the order of
// destruction. The timing rules and Ctrl+C are shown by transcripts.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "execution/command_queue.h"
#include "execution/command_runnable.h"
#include "utilities/uthread.h"

namespace {

using VX_UTL::uThread;

// Polls: std::atomic's own wait can miss a wake-up under MinGW, which hangs
// a test under Wine.
void wait_while(const std::atomic<int>& value, int is) {
    while (value == is) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

// What happened to a fake command; outlives the command, which its owner
// deletes.
struct record {
    std::atomic<int> stops{0};
    std::atomic<int> inside_stop{0};
    std::atomic<bool> stops_overlapped{false};
    std::atomic<bool> destroyed{false};
    std::atomic<int> stop_gate{0};
};

// A use case that runs until it got `stops_needed` stops, or for
// `ends_after_ms` if that is 0 or more.
struct shape {
    int ends_after_ms = -1;
    int stops_needed = 1;
    int stop_blocks_ms = 0;            // Time spent inside each stop, after it counted.
    bool stop_waits_for_gate = false;  // Each stop then blocks until stop_gate is true.
};

class fake_command : public zelno_command {
  public:
    fake_command(std::shared_ptr<record> into, shape wanted) : seen(std::move(into)), how(wanted) {}
    ~fake_command() override { seen->destroyed = true; }

    int32_t run() override {
        std::unique_lock<std::mutex> lock(mutex);
        const auto stopped = [this] { return stops_taken >= how.stops_needed; };
        if (how.ends_after_ms < 0) {
            changed.wait(lock, stopped);
        } else {
            changed.wait_for(lock, std::chrono::milliseconds(how.ends_after_ms), stopped);
        }
        return 0;
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
        ++seen->stops;
        std::this_thread::sleep_for(std::chrono::milliseconds(how.stop_blocks_ms));
        if (how.stop_waits_for_gate) {
            wait_while(seen->stop_gate, 0);
        }
        --seen->inside_stop;
    }

  private:
    std::shared_ptr<record> seen;
    shape how;
    std::mutex mutex;
    std::condition_variable changed;
    int stops_taken = 0;  // Guarded by `mutex`.
};

TEST(command_runnable, stays_running_across_stops_until_the_command_returns) {
    auto seen = std::make_shared<record>();
    command_runnable runnable(new fake_command(seen, {.stops_needed = 2}));
    uThread thread(&runnable, 0, 0);
    EXPECT_EQ(runnable.status(), status_not_started);
    ASSERT_TRUE(thread.start());
    runnable.wait_while(status_not_started);
    EXPECT_EQ(runnable.status(), status_running);

    runnable.stop();
    EXPECT_EQ(runnable.status(), status_running);
    EXPECT_FALSE(thread.wait(0));
    runnable.stop();
    ASSERT_TRUE(thread.wait(uThread::infinite));
    EXPECT_EQ(runnable.status(), status_returned_0);
    // Reaches the command also after its run has returned.
    runnable.stop();
    EXPECT_EQ(seen->stops, 3);
}

TEST(command_runnable, a_stop_inside_the_command_keeps_the_thread_until_it_returns) {
    auto seen = std::make_shared<record>();
    command_runnable runnable(new fake_command(seen, {.stop_waits_for_gate = true}));
    uThread thread(&runnable, 0, 0);
    ASSERT_TRUE(thread.start());
    runnable.wait_while(status_not_started);

    std::thread stopper([&runnable] { runnable.stop(); });
    runnable.wait_while(status_running);
    // The command's run is over, but the thread may not leave while the stop
    // is still inside the command.
    EXPECT_FALSE(thread.wait(10));
    seen->stop_gate = 1;
    stopper.join();
    EXPECT_TRUE(thread.wait(uThread::infinite));
}

TEST(command_runnable, destroyed_before_it_ran_it_still_deletes_the_command) {
    auto never_ran = std::make_shared<record>();
    delete new command_runnable(new fake_command(never_ran, {}));
    EXPECT_TRUE(never_ran->destroyed);
}

TEST(command_queue, a_stop_at_the_limit_and_stop_all_reach_the_command_one_after_the_other) {
    // The command needs two stops. The limit gives the first; stop_all,
    // called while that one is still inside the command, gives the second.
    command_queue queue;
    auto seen = std::make_shared<record>();
    queue.add("A", new fake_command(seen, {.stops_needed = 2, .stop_blocks_ms = 5}), 10);
    std::thread ctrl_c([&] {
        wait_while(seen->stops, 0);
        queue.stop_all();
    });
    testing::internal::CaptureStdout();
    queue.start_all();
    queue.wait_all();
    ctrl_c.join();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Stopping A after 10ms\n");
    EXPECT_EQ(seen->stops, 2);
    EXPECT_FALSE(seen->stops_overlapped);
    EXPECT_TRUE(seen->destroyed);
}

TEST(command_queue, a_ctrl_c_in_the_last_moments_of_a_limit_is_left_to_the_limit) {
    struct row {
        int32_t duration;
        int stops_by_ctrl_c;
        const char* printed;
        exit_status result;
    };
    for (const row& r : {row{200, 0, "Stopping A after 200ms\n", exit_all_passed},
                         row{60000, 1, "", exit_use_case_failed}}) {
        command_queue queue;
        auto seen = std::make_shared<record>();
        queue.add("A", new fake_command(seen, {}), r.duration);
        testing::internal::CaptureStdout();
        queue.start_all();
        queue.stop_all();
        EXPECT_EQ(seen->stops, r.stops_by_ctrl_c) << r.duration;
        EXPECT_EQ(queue.wait_all(), r.result) << r.duration;
        EXPECT_EQ(testing::internal::GetCapturedStdout(), r.printed) << r.duration;
    }
}

}  // namespace
