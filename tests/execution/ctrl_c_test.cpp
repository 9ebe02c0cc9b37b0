// SIGINT sent to the whole process, as a terminal sends it. ctest runs each
// case in a process of its own, and each installs the routing before it
// starts any thread, as main does.

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <memory>
#include <thread>

#include "execution/command_queue.h"
#include "fake_command.h"
#include "shell/shell.h"
#include "utilities/uconsole.h"
#include "utilities/uplatform.h"

namespace {

void send_ctrl_c() {
    ASSERT_EQ(kill(getpid(), SIGINT), 0);
}

bool interrupt_blocked_here() {
    sigset_t current;
    pthread_sigmask(SIG_BLOCK, nullptr, &current);
    return sigismember(&current, SIGINT) == 1;
}

TEST(ctrl_c, stops_every_running_use_case_without_a_message) {
    const auto ctrl_handling = install_ctrl_handler();
    ASSERT_TRUE(ctrl_handling->installed());
    auto untimed = std::make_shared<fake::record>();
    auto timed = std::make_shared<fake::record>();
    global_command_queue.add("untimed", new fake::command(untimed, {}), 0);
    global_command_queue.add("timed", new fake::command(timed, {}), 60000);
    std::thread user([&] {
        fake::await_at_least(untimed->entered_run, 1);
        fake::await_at_least(timed->entered_run, 1);
        send_ctrl_c();
    });
    fake::cout_capture output;
    global_command_queue.start_all();
    global_command_queue.wait_all();
    user.join();

    EXPECT_EQ(output.str(), "");
    const uint32_t main_thread = VX_UTL::uPlatform::current_thread_id();
    for (const auto& seen : {untimed, timed}) {
        EXPECT_EQ(seen->stops, 1);
        EXPECT_NE(seen->stop_thread, main_thread);
        EXPECT_TRUE(seen->destroyed);
    }
}

std::atomic<int> routine_calls{0};
std::atomic<uint32_t> routine_thread{0};

bool counting_routine(uint32_t control_type) {
    EXPECT_EQ(control_type, VX_UTL::CTRL_C_EVENT);
    routine_thread = VX_UTL::uPlatform::current_thread_id();
    fake::bump(routine_calls);
    return true;
}

TEST(ctrl_c, with_nothing_running_it_is_handled_and_the_process_goes_on) {
    routine_calls = 0;
    ASSERT_FALSE(interrupt_blocked_here());
    {
        VX_UTL::uConsoleControl control(counting_routine);
        ASSERT_TRUE(control.installed());
        EXPECT_TRUE(interrupt_blocked_here());
        for (int press = 1; press <= 3; ++press) {
            send_ctrl_c();
            fake::await_at_least(routine_calls, press);
        }
        EXPECT_NE(routine_thread, VX_UTL::uPlatform::current_thread_id());
    }
    // Taken off: the mask is as it was, and the routine is called no more.
    EXPECT_FALSE(interrupt_blocked_here());
    EXPECT_EQ(routine_calls, 3);
}

TEST(ctrl_c, one_that_comes_just_before_the_routing_is_taken_off_is_still_served) {
    routine_calls = 0;
    {
        VX_UTL::uConsoleControl control(counting_routine);
        send_ctrl_c();
    }
    EXPECT_EQ(routine_calls, 1);
}

bool refusing_routine(uint32_t) {
    return false;
}

TEST(ctrl_c_death, an_event_the_routine_refuses_takes_the_default_action) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            VX_UTL::uConsoleControl control(refusing_routine);
            kill(getpid(), SIGINT);
            pause();
        },
        testing::KilledBySignal(SIGINT), "");
}

}  // namespace
