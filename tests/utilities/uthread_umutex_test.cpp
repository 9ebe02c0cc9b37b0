#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <thread>

#include "utilities/umutex.h"
#include "utilities/uthread.h"

// The calling thread's priority as the platform keeps it, and what it is in
// a thread started with `asked` by one that has `inherited`.
int own_priority();
int priority_after(int inherited, int asked);

namespace {

using VX_UTL::uMutex;
using VX_UTL::uRunnable;
using VX_UTL::uThread;

// Runs until the test lets it go; notes its thread's priority first.
struct gated_body : uRunnable {
    void run() override {
        priority = own_priority();
        entered.set_value();
        released.get_future().wait();
        ++runs;
        left.set_value();
    }
    // Not semaphores: MinGW's hung here under Wine, waking no waiter.
    std::promise<void> entered, released, left;
    std::atomic<int> runs{0};
    int priority = 0;
};

TEST(uthread, wait_answers_by_the_end_and_one_object_runs_one_body_once) {
    gated_body body;
    uThread thread(&body, 0, 0);
    EXPECT_FALSE(thread.wait(uThread::infinite));  // Not started: false at once.
    ASSERT_TRUE(thread.start());
    body.entered.get_future().wait();
    EXPECT_FALSE(thread.wait(5));
    EXPECT_FALSE(thread.start());
    body.released.set_value();
    EXPECT_TRUE(thread.wait(uThread::infinite));
    EXPECT_TRUE(thread.wait(0));
    EXPECT_FALSE(thread.start());
    EXPECT_EQ(body.runs, 1);
    EXPECT_EQ(body.priority, priority_after(own_priority(), 0));
    uThread empty(nullptr, 0, 0);
    ASSERT_TRUE(empty.start());
    EXPECT_TRUE(empty.wait(uThread::infinite));
}

// Lower, which needs no privilege; in place before the body starts.
TEST(uthread, a_stack_below_the_minimum_and_a_lower_priority) {
    static gated_body body;  // The thread's last touch of it may follow the wait.
    auto thread = std::make_unique<uThread>(&body, -2, 1);
    ASSERT_TRUE(thread->start());
    body.entered.get_future().wait();
    EXPECT_EQ(body.priority, priority_after(own_priority(), -2));
    thread.reset();  // The thread goes on without the object.
    body.released.set_value();
    body.left.get_future().wait();
}

TEST(umutex, is_held_until_the_holders_last_unlock) {
    uMutex mutex;
    EXPECT_FALSE(mutex.unlock());
    ASSERT_TRUE(mutex.lock());
    ASSERT_TRUE(mutex.lock());
    bool refused = false;
    std::thread([&] { refused = !mutex.unlock(); }).join();
    EXPECT_TRUE(refused);
    std::atomic<bool> other_holds{false};
    std::thread other([&] {
        mutex.lock();
        other_holds = true;
        mutex.unlock();
    });
    EXPECT_TRUE(mutex.unlock());
    // A slow machine can only hide a fault here, never invent one.
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_FALSE(other_holds);
    EXPECT_TRUE(mutex.unlock());
    other.join();
    EXPECT_TRUE(other_holds);
    EXPECT_FALSE(mutex.unlock());
}

}  // namespace
