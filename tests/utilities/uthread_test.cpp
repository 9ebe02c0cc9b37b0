#include "utilities/uthread.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace {

using VX_UTL::uRunnable;
using VX_UTL::uThread;

// A body that runs until the test lets it go.
class gated_body : public uRunnable {
  public:
    void run() override {
        {
            std::unique_lock<std::mutex> lock(mutex);
            entered = true;
            changed.notify_all();
            changed.wait(lock, [this] { return released; });
        }
        // The last touch of the object, so a test may end once it sees it.
        ++runs;
    }
    void release() {
        const std::lock_guard<std::mutex> lock(mutex);
        released = true;
        changed.notify_all();
    }
    void await_entry() {
        std::unique_lock<std::mutex> lock(mutex);
        changed.wait(lock, [this] { return entered; });
    }

    std::atomic<int> runs{0};

  private:
    std::mutex mutex;
    std::condition_variable changed;
    bool entered = false;
    bool released = false;
};

TEST(uthread, wait_before_start_is_false_at_once) {
    gated_body body;
    uThread thread(&body, 0, 0);
    EXPECT_FALSE(thread.wait(0));
    EXPECT_FALSE(thread.wait(uThread::infinite));
    EXPECT_EQ(body.runs, 0);
}

TEST(uthread, wait_is_false_while_running_and_true_after_the_end_any_number_of_times) {
    gated_body body;
    uThread thread(&body, 0, 0);
    ASSERT_TRUE(thread.start());
    body.await_entry();
    EXPECT_FALSE(thread.wait(0));
    EXPECT_FALSE(thread.wait(5));
    body.release();
    EXPECT_TRUE(thread.wait(uThread::infinite));
    EXPECT_EQ(body.runs, 1);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(thread.wait(0));
        EXPECT_TRUE(thread.wait(1000));
    }
}

TEST(uthread, a_second_start_is_refused_and_the_first_thread_stays_waitable) {
    gated_body body;
    uThread thread(&body, 0, 0);
    ASSERT_TRUE(thread.start());
    EXPECT_FALSE(thread.start());
    body.release();
    EXPECT_TRUE(thread.wait(uThread::infinite));
    EXPECT_FALSE(thread.start());
    EXPECT_EQ(body.runs, 1);
}

TEST(uthread, without_a_body_it_starts_and_ends) {
    uThread thread(nullptr, 0, 0);
    ASSERT_TRUE(thread.start());
    EXPECT_TRUE(thread.wait(uThread::infinite));
}

TEST(uthread, destroying_the_object_leaves_its_thread_running) {
    gated_body body;
    auto thread = std::make_unique<uThread>(&body, 0, 0);
    ASSERT_TRUE(thread->start());
    body.await_entry();
    thread.reset();
    body.release();
    // The thread still finishes its body; the test ends only once it has.
    while (body.runs == 0) {
        std::this_thread::yield();
    }
    EXPECT_EQ(body.runs, 1);
}

TEST(uthread, stack_sizes_below_the_minimum_are_raised) {
    for (const uint32_t stack_size : {1u, 4096u, 1u << 20}) {
        gated_body body;
        uThread thread(&body, 0, stack_size);
        ASSERT_TRUE(thread.start()) << stack_size;
        body.release();
        EXPECT_TRUE(thread.wait(uThread::infinite)) << stack_size;
    }
}

// Reads the nice value of the thread that runs it, on its first step.
class nice_probe : public uRunnable {
  public:
    void run() override {
        errno = 0;
        nice = getpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)));
    }
    int nice = 0;
};

TEST(uthread, a_lower_priority_is_in_place_before_the_body_starts) {
    errno = 0;
    const int own = getpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)));
    if (own > 17) {
        GTEST_SKIP() << "already at the lowest priority";
    }
    nice_probe probe;
    uThread thread(&probe, -2, 0);
    ASSERT_TRUE(thread.start());
    ASSERT_TRUE(thread.wait(uThread::infinite));
    EXPECT_EQ(probe.nice, own + 2);
}

}  // namespace
