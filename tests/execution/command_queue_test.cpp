// The timing rules of the queue are shown by a transcript with -D limits;
// here, what no transcript can see.

#include "execution/command_queue.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

#include "fake_command.h"

namespace {

TEST(command_queue, starts_in_order_each_running_before_the_next_starts) {
    command_queue queue;
    std::atomic<int> order{0};
    std::vector<std::shared_ptr<fake::record>> records;
    fake::behaviour ends_at_once;
    ends_at_once.ends_after_ms = 0;
    for (const char* name : {"A", "B", "C", "D"}) {
        records.push_back(std::make_shared<fake::record>());
        queue.add(name, new fake::command(records.back(), ends_at_once, &order), 0);
    }
    queue.start_all();
    queue.wait_all();
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(records[static_cast<std::size_t>(i)]->start_order, i + 1);
    }
}

TEST(command_queue, a_stop_at_the_limit_and_stop_all_reach_the_command_one_after_the_other) {
    // The command needs two stops. The limit gives the first; stop_all,
    // called while that one is still inside the command, gives the second.
    command_queue queue;
    auto seen = std::make_shared<fake::record>();
    fake::behaviour how;
    how.stops_needed = 2;
    how.stop_blocks_ms = 5;
    queue.add("A", new fake::command(seen, how), 10);
    std::thread ctrl_c([&] {
        fake::await_at_least(seen->stops, 1);
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

}  // namespace
