#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <semaphore>
#include <thread>

#include "utilities/umutex.h"
#include "utilities/uthread.h"

namespace {

using VX_UTL::uMutex;
using VX_UTL::uRunnable;
using VX_UTL::uThread;

int own_nice_value() {
    return getpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)));
}

// Runs until the test lets it go; notes its thread's nice value first.
struct gated_body : uRunnable {
    void run() override {
        nice = own_nice_value();
        entered.release();
        released.acquire();
        ++runs;  // The last touch of the object, so a test may end once it sees it.
    }
    std::binary_semaphore entered{0}, released{0};
    std::atomic<int> runs{0};
    int nice = 0;
};

TEST(uthread, wait_answers_by_the_end_and_one_object_runs_one_body_once) {
    gated_body body;
    uThread thread(&body, 0, 0);
    EXPECT_FALSE(thread.wait(uThread::infinite));  // Not started: false at once.
    ASSERT_TRUE(thread.start());
    body.entered.acquire();
    EXPECT_FALSE(thread.wait(5));
    EXPECT_FALSE(thread.start());
    body.released.release();
    EXPECT_TRUE(thread.wait(uThread::infinite));
    EXPECT_TRUE(thread.wait(0));
    EXPECT_FALSE(thread.start());
    EXPECT_EQ(body.runs, 1);
    EXPECT_EQ(body.nice, own_nice_value());
    uThread empty(nullptr, 0, 0);
    ASSERT_TRUE(empty.start());
    EXPECT_TRUE(empty.wait(uThread::infinite));
}

// Lower, which needs no privilege; in place before the body starts.
TEST(uthread, a_stack_below_the_minimum_and_a_lower_priority) {
    gated_body body;
    auto thread = std::make_unique<uThread>(&body, -2, 1);
    ASSERT_TRUE(thread->start());
    body.entered.acquire();
    EXPECT_EQ(body.nice, std::min(own_nice_value() + 2, 19));
    thread.reset();  // The thread goes on without the object.
    body.released.release();
    while (body.runs == 0) {
        std::this_thread::yield();
    }
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
