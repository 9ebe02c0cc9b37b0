#include "execution/command_queue.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "fake_command.h"

namespace {

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

struct queued {
    const char* name;
    int ends_after_ms;
    int32_t duration;
    int stops;  // Stops the command is expected to get.
};

struct queue_case {
    const char* name;
    std::vector<queued> entries;
    const char* output;
};

constexpr int runs_on = fake::until_stopped;

class queue_rules : public testing::TestWithParam<queue_case> {};

// Durations are a hundredth of the real ones; the messages follow them.
TEST_P(queue_rules, starts_in_order_and_stops_each_at_its_limit) {
    const queue_case& c = GetParam();
    command_queue queue;
    std::atomic<int> order{0};
    std::vector<std::shared_ptr<fake::record>> records;
    for (const queued& entry : c.entries) {
        records.push_back(std::make_shared<fake::record>());
        fake::behaviour how;
        how.ends_after_ms = entry.ends_after_ms;
        queue.add(entry.name, new fake::command(records.back(), how, &order), entry.duration);
    }
    CaptureStdout();
    queue.start_all();
    queue.wait_all();
    EXPECT_EQ(GetCapturedStdout(), c.output);
    for (std::size_t i = 0; i < c.entries.size(); ++i) {
        SCOPED_TRACE(c.entries[i].name);
        // Each one runs before the next starts.
        EXPECT_EQ(records[i]->start_order, static_cast<int>(i) + 1);
        EXPECT_EQ(records[i]->stops, c.entries[i].stops);
        EXPECT_TRUE(records[i]->destroyed);
    }
}

INSTANTIATE_TEST_SUITE_P(
    table, queue_rules,
    testing::Values(
        // After A, 15 and 10 are left: the later added C is nearer.
        queue_case{"nearest_end_first",
                   {{"A", runs_on, 10, 1}, {"B", runs_on, 25, 1}, {"C", runs_on, 20, 1}},
                   "Stopping A after 10ms\nStopping C after 20ms\nStopping B after 25ms\n"},
        queue_case{"equal_limits_in_order_of_add",
                   {{"A", runs_on, 20, 1}, {"B", runs_on, 20, 1}},
                   "Stopping A after 20ms\nStopping B after 20ms\n"},
        queue_case{"zero_is_no_limit",
                   {{"A", runs_on, 10, 1}, {"B", 40, 0, 0}},
                   "Stopping A after 10ms\n"},
        queue_case{"negative_is_no_limit", {{"A", 5, -1, 0}}, ""},
        queue_case{"ends_before_its_limit", {{"A", 2, 30, 0}}, ""},
        // A's wait comes back early; B is still stopped at its own limit.
        queue_case{
            "one_ends_early", {{"A", 2, 10, 0}, {"B", runs_on, 30, 1}}, "Stopping B after 30ms\n"}),
    [](const testing::TestParamInfo<queue_case>& param_info) { return param_info.param.name; });

TEST(command_queue, a_wait_that_comes_back_early_counts_whole) {
    // A ends long before its limit; had the queue read a clock, B would run
    // for 5 s. Counted as waits, A's wait is worth 5000 and B has 10 left.
    command_queue queue;
    auto a = std::make_shared<fake::record>();
    auto b = std::make_shared<fake::record>();
    fake::behaviour ends_soon;
    ends_soon.ends_after_ms = 100;
    queue.add("A", new fake::command(a, ends_soon), 5000);
    queue.add("B", new fake::command(b, {}), 5010);
    CaptureStdout();
    const auto begin = std::chrono::steady_clock::now();
    queue.start_all();
    queue.wait_all();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(2500));
    EXPECT_EQ(GetCapturedStdout(), "Stopping B after 5010ms\n");
    EXPECT_EQ(a->stops, 0);
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
    CaptureStdout();
    queue.start_all();
    queue.wait_all();
    ctrl_c.join();
    EXPECT_EQ(GetCapturedStdout(), "Stopping A after 10ms\n");
    EXPECT_EQ(seen->stops, 2);
    EXPECT_FALSE(seen->stops_overlapped);
    EXPECT_TRUE(seen->destroyed);
}

}  // namespace
