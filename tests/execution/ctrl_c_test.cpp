// SIGINT sent to the whole process, as a terminal sends it: how the routing
// is put up and taken down. A transcript shows Ctrl+C stopping use cases.

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>

#include "utilities/uconsole.h"
#include "utilities/uplatform.h"

namespace {

bool interrupt_blocked_here() {
    sigset_t current;
    pthread_sigmask(SIG_BLOCK, nullptr, &current);
    return sigismember(&current, SIGINT) == 1;
}

std::atomic<int> routine_calls{0};
std::atomic<uint32_t> routine_thread{0};

bool counting_routine(uint32_t control_type) {
    EXPECT_EQ(control_type, VX_UTL::CTRL_C_EVENT);
    routine_thread = VX_UTL::uPlatform::current_thread_id();
    ++routine_calls;
    routine_calls.notify_all();
    return true;
}

TEST(ctrl_c, is_served_on_a_thread_of_its_own_until_the_routing_is_taken_off) {
    ASSERT_FALSE(interrupt_blocked_here());
    {
        VX_UTL::uConsoleControl control(counting_routine);
        ASSERT_TRUE(control.installed());
        EXPECT_TRUE(interrupt_blocked_here());
        for (int press = 1; press <= 3; ++press) {
            ASSERT_EQ(kill(getpid(), SIGINT), 0);
            for (int seen = routine_calls; seen < press; seen = routine_calls) {
                routine_calls.wait(seen);
            }
        }
        EXPECT_NE(routine_thread, VX_UTL::uPlatform::current_thread_id());
    }
    // Taken off: the mask is as it was, and the routine is called no more.
    EXPECT_FALSE(interrupt_blocked_here());
    EXPECT_EQ(routine_calls, 3);
}

TEST(ctrl_c, one_that_comes_just_before_the_routing_is_taken_off_is_still_served) {
    {
        VX_UTL::uConsoleControl control(counting_routine);
        kill(getpid(), SIGINT);
    }
    EXPECT_EQ(routine_calls, 1);
}

}  // namespace
