#include "utilities/umutex.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace {

TEST(umutex, is_held_until_the_holders_last_unlock) {
    VX_UTL::uMutex mutex;
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
