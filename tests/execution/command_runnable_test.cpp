#include "execution/command_runnable.h"

#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <thread>

#include "fake_command.h"
#include "utilities/uthread.h"

namespace {

using VX_UTL::uThread;

struct mapping_case {
    const char* name;
    int32_t result;
    uint32_t status;
};

class status_mapping : public testing::TestWithParam<mapping_case> {};

TEST_P(status_mapping, the_result_of_run_gives_the_final_status) {
    auto seen = std::make_shared<fake::record>();
    fake::behaviour how;
    how.ends_after_ms = 0;
    how.result = GetParam().result;
    command_runnable runnable(new fake::command(seen, how));
    EXPECT_EQ(runnable.status(), status_not_started);
    uThread thread(&runnable, 0, 0);
    ASSERT_TRUE(thread.start());
    ASSERT_TRUE(thread.wait(uThread::infinite));
    EXPECT_EQ(runnable.status(), GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(table, status_mapping,
                         testing::Values(mapping_case{"zero", 0, status_returned_0},
                                         mapping_case{"one", 1, status_returned_1},
                                         mapping_case{"minus_one", -1, status_returned_other},
                                         mapping_case{"two", 2, status_returned_other},
                                         mapping_case{"lowest", INT32_MIN, status_returned_other},
                                         mapping_case{"highest", INT32_MAX, status_returned_other}),
                         [](const testing::TestParamInfo<mapping_case>& param_info) {
                             return param_info.param.name;
                         });

TEST(command_runnable, stays_running_across_stops_until_the_command_returns) {
    auto seen = std::make_shared<fake::record>();
    fake::behaviour how;
    how.stops_needed = 2;
    command_runnable runnable(new fake::command(seen, how));
    uThread thread(&runnable, 0, 0);
    ASSERT_TRUE(thread.start());
    fake::await_at_least(seen->entered_run, 1);
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
    auto seen = std::make_shared<fake::record>();
    fake::behaviour how;
    how.stop_waits_for_gate = true;
    command_runnable runnable(new fake::command(seen, how));
    uThread thread(&runnable, 0, 0);
    ASSERT_TRUE(thread.start());
    runnable.wait_while(status_not_started);

    std::thread stopper([&runnable] { runnable.stop(); });
    runnable.wait_while(status_running);
    // The command's run is over, but the thread may not leave while the stop
    // is still inside the command.
    EXPECT_FALSE(thread.wait(10));
    seen->stop_gate = true;
    seen->stop_gate.notify_all();
    stopper.join();
    EXPECT_TRUE(thread.wait(uThread::infinite));
}

TEST(command_runnable, destroyed_before_it_ran_it_still_deletes_the_command) {
    auto never_ran = std::make_shared<fake::record>();
    delete new command_runnable(new fake::command(never_ran, {}));
    EXPECT_TRUE(never_ran->destroyed);
}

}  // namespace
