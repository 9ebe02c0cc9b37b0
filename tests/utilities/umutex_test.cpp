#include "utilities/umutex.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace {

using VX_UTL::uMutex;

TEST(umutex, a_free_mutex_refuses_unlock) {
    uMutex mutex;
    EXPECT_FALSE(mutex.unlock());
    EXPECT_TRUE(mutex.lock());
    EXPECT_TRUE(mutex.unlock());
    EXPECT_FALSE(mutex.unlock());
}

TEST(umutex, taken_twice_it_is_held_until_the_second_unlock) {
    uMutex mutex;
    ASSERT_TRUE(mutex.lock());
    ASSERT_TRUE(mutex.lock());

    std::atomic<bool> other_holds{false};
    std::thread other([&] {
        mutex.lock();
        other_holds = true;
        mutex.unlock();
    });
    EXPECT_TRUE(mutex.unlock());
    // Still held once: the other thread must not get in. A slow machine can
    // only hide a fault here, never invent one.
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_FALSE(other_holds);
    EXPECT_TRUE(mutex.unlock());
    other.join();
    EXPECT_TRUE(other_holds);
    EXPECT_FALSE(mutex.unlock());
}

TEST(umutex, only_the_holder_can_unlock) {
    uMutex mutex;
    ASSERT_TRUE(mutex.lock());
    bool refused_while_held = false;
    std::thread([&] { refused_while_held = !mutex.unlock(); }).join();
    EXPECT_TRUE(refused_while_held);
    // The refusal changed nothing: one unlock gives it back, a second is
    // refused.
    EXPECT_TRUE(mutex.unlock());
    EXPECT_FALSE(mutex.unlock());
}

}  // namespace
