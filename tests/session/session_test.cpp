// The session variables after each outcome of connect and disconnect. The
// output texts are covered by the end-to-end transcripts; here the state that
// use cases will get is checked directly.

#include "session/session.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "execution/command_queue.h"

namespace {

namespace fs = std::filesystem;

class session_test : public testing::Test {
  protected:
    void SetUp() override {
        directory = fs::temp_directory_path() /
                    (std::string("zelno-session-") +
                     testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::create_directories(directory);
        previous = fs::current_path();
        fs::current_path(directory);
        std::ofstream("board.dat") << "board\n";
        std::ofstream("other.dat") << "board\n";
        std::ofstream("target.tgcfg") << "target\n";
        argument_list words = {"disconnect"};
        disconnect_command(words, global_command_queue);
    }
    void TearDown() override {
        fs::current_path(previous);
        fs::remove_all(directory);
    }

    // Runs one command line's words, swallowing its output, and gives what
    // it threw.
    std::string run(argument_list words, void (*handler)(argument_list&, command_queue&)) {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        std::string thrown;
        try {
            handler(words, global_command_queue);
        } catch (const std::runtime_error& e) {
            thrown = e.what();
        }
        testing::internal::GetCapturedStdout();
        testing::internal::GetCapturedStderr();
        return thrown;
    }

    fs::path directory;
    fs::path previous;
};

TEST_F(session_test, connect_records_the_file_and_device) {
    run({"connect", "--config", "board.dat", "hosted"}, connect_command);
    EXPECT_TRUE(session_connected);
    EXPECT_EQ(session_config_file, "board.dat");
    EXPECT_EQ(session_device_name, "unused");

    run({"connect", "-c", "other.dat", "-d", "probe7", "prb"}, connect_command);
    EXPECT_EQ(session_config_file, "other.dat");
    EXPECT_EQ(session_device_name, "probe7");

    // A device given as an empty word replaces the default too.
    run({"connect", "--config", "board.dat", "--device", "", "prb"}, connect_command);
    EXPECT_EQ(session_device_name, "");
}

TEST_F(session_test, connect_with_a_parse_error_still_connects) {
    run({"connect", "--config", "board.dat"}, connect_command);
    EXPECT_TRUE(session_connected);
    EXPECT_EQ(session_config_file, "board.dat");
    EXPECT_EQ(session_device_name, "unused");
}

TEST_F(session_test, help_or_a_missing_file_keeps_the_earlier_session) {
    run({"connect", "--config", "board.dat", "-d", "first", "hosted"}, connect_command);
    const struct {
        argument_list words;
    } keeps[] = {
        {{"connect", "--config", "missing.dat", "hosted"}},
        {{"connect", "--help", "--config", "other.dat", "hosted"}},
        {{"connect", "-d", "second", "hosted"}},
    };
    for (const auto& c : keeps) {
        run(c.words, connect_command);
        EXPECT_TRUE(session_connected);
        EXPECT_EQ(session_config_file, "board.dat");
        EXPECT_EQ(session_device_name, "first");
    }
}

TEST_F(session_test, disconnect_clears_and_disconnect_with_words_does_not) {
    run({"connect", "--config", "board.dat", "hosted"}, connect_command);
    run({"disconnect", "now"}, disconnect_command);
    EXPECT_TRUE(session_connected);
    run({"disconnect"}, disconnect_command);
    EXPECT_FALSE(session_connected);
    EXPECT_EQ(session_config_file, "");
    EXPECT_EQ(session_device_name, "");
}

TEST_F(session_test, a_failed_conversion_leaves_the_session_on_the_target_file) {
    setenv("LD_LIBRARY_PATH", ZELNO_TEST_LIBRARY_DIR "/tgcfg/fails", 1);
    EXPECT_EQ(run({"connect", "--config", "target.tgcfg", "-d", "dev", "hosted"}, connect_command),
              "Could not convert TGCFG to Board Config file.\n");
    EXPECT_TRUE(session_connected);
    EXPECT_EQ(session_config_file, "target.tgcfg");
    EXPECT_EQ(session_device_name, "dev");
    EXPECT_FALSE(fs::exists("ws_board.dat"));
}

}  // namespace
