#include "execution/command_queue.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "fake_command.h"

namespace {

using fake::until_stopped;

struct queued {
    const char* name;
    fake::behaviour how;
    int32_t duration;
    int stops;  // Stops the command is expected to get.
};

struct queue_case {
    const char* title;
    std::vector<queued> entries;
    const char* output;
};

fake::behaviour ends_after(int ms) {
    fake::behaviour how;
    how.ends_after_ms = ms;
    return how;
}

const fake::behaviour runs_on = ends_after(until_stopped);

void PrintTo(const queue_case& c, std::ostream* out) {
    *out << c.title;
}

class queue_cases : public testing::TestWithParam<queue_case> {};

// Durations are a hundredth of the real ones; the messages follow them.
TEST_P(queue_cases, stops_each_use_case_at_its_limit_in_order) {
    const queue_case& c = GetParam();
    command_queue queue;
    std::vector<std::shared_ptr<fake::record>> records;
    for (const queued& entry : c.entries) {
        records.push_back(std::make_shared<fake::record>());
        queue.add(entry.name, new fake::command(records.back(), entry.how), entry.duration);
    }
    fake::cout_capture output;
    queue.start_all();
    queue.wait_all();
    EXPECT_EQ(output.str(), c.output);
    for (std::size_t i = 0; i < c.entries.size(); ++i) {
        SCOPED_TRACE(c.entries[i].name);
        EXPECT_EQ(records[i]->entered_run, 1);
        EXPECT_EQ(records[i]->stops, c.entries[i].stops);
        EXPECT_TRUE(records[i]->destroyed);
    }
}

INSTANTIATE_TEST_SUITE_P(
    table, queue_cases,
    testing::Values(queue_case{"nearest_first",
                               {{"A", runs_on, 10, 1}, {"B", runs_on, 30, 1}},
                               "Stopping A after 10ms\nStopping B after 30ms\n"},
                    queue_case{"later_added_but_nearer",
                               {{"A", runs_on, 30, 1}, {"B", runs_on, 10, 1}},
                               "Stopping B after 10ms\nStopping A after 30ms\n"},
                    // After A, 15 and 10 are left: the third is chosen next.
                    queue_case{
                        "three_limits",
                        {{"A", runs_on, 10, 1}, {"B", runs_on, 25, 1}, {"C", runs_on, 20, 1}},
                        "Stopping A after 10ms\nStopping C after 20ms\nStopping B after 25ms\n"},
                    queue_case{"equal_limits_in_order_of_add",
                               {{"A", runs_on, 20, 1}, {"B", runs_on, 20, 1}},
                               "Stopping A after 20ms\nStopping B after 20ms\n"},
                    queue_case{"timed_beside_untimed",
                               {{"A", runs_on, 10, 1}, {"B", ends_after(40), 0, 0}},
                               "Stopping A after 10ms\n"},
                    queue_case{"negative_is_no_limit", {{"A", ends_after(5), -1, 0}}, ""},
                    queue_case{"ends_before_its_limit", {{"A", ends_after(2), 30, 0}}, ""},
                    // A's wait comes back early; B is still stopped at its own limit.
                    queue_case{"one_ends_early",
                               {{"A", ends_after(2), 10, 0}, {"B", runs_on, 30, 1}},
                               "Stopping B after 30ms\n"},
                    queue_case{"empty", {}, ""}),
    [](const testing::TestParamInfo<queue_case>& param_info) { return param_info.param.title; });

TEST(command_queue, a_wait_that_comes_back_early_counts_whole) {
    // A ends long before its limit; had the queue read a clock, B would run
    // for 5 s. Counted as waits, A's wait is worth 5000 and B has 10 left.
    command_queue queue;
    auto a = std::make_shared<fake::record>();
    auto b = std::make_shared<fake::record>();
    queue.add("A", new fake::command(a, ends_after(100)), 5000);
    queue.add("B", new fake::command(b, runs_on), 5010);
    fake::cout_capture output;
    const auto begin = std::chrono::steady_clock::now();
    queue.start_all();
    queue.wait_all();
    const auto took = std::chrono::steady_clock::now() - begin;
    EXPECT_EQ(output.str(), "Stopping B after 5010ms\n");
    EXPECT_LT(took, std::chrono::milliseconds(2500));
    EXPECT_EQ(a->stops, 0);
    EXPECT_EQ(b->stops, 1);
}

TEST(command_queue, starts_in_order_each_running_before_the_next_starts) {
    command_queue queue;
    std::atomic<int> order{0};
    std::vector<std::shared_ptr<fake::record>> records;
    for (const char* name : {"A", "B", "C", "D"}) {
        records.push_back(std::make_shared<fake::record>());
        queue.add(name, new fake::command(records.back(), ends_after(0), &order), 0);
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
    fake::cout_capture output;
    queue.start_all();
    queue.wait_all();
    ctrl_c.join();
    EXPECT_EQ(output.str(), "Stopping A after 10ms\n");
    EXPECT_EQ(seen->stops, 2);
    EXPECT_FALSE(seen->stops_overlapped);
    EXPECT_TRUE(seen->destroyed);
}

TEST(command_queue, serves_one_line_after_another) {
    command_queue queue;
    for (int line = 0; line < 2; ++line) {
        auto first = std::make_shared<fake::record>();
        auto second = std::make_shared<fake::record>();
        queue.add("ws", new fake::command(first, runs_on), 3);
        queue.add("pt", new fake::command(second, ends_after(0)), 0);
        fake::cout_capture output;
        queue.start_all();
        queue.wait_all();
        EXPECT_EQ(output.str(), "Stopping ws after 3ms\n");
        EXPECT_TRUE(first->destroyed);
        EXPECT_TRUE(second->destroyed);
    }
}

}  // namespace
