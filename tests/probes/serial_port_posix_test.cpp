// The serial port against a pseudo-terminal whose master side is the
// instrument. Raw bytes both ways (no echo, no CR or flow-control
// translation) are checked end to end: ppk2_session_test.py compares the
// emulator's command log exactly and counts every sample word.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>
#include <vector>

#include "serial/serial_port.h"

namespace {

// A port on a pseudo-terminal: the test holds the master.
struct SerialPort : ::testing::Test {
    void SetUp() override {
        master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
        ASSERT_TRUE(master >= 0 && ::grantpt(master) == 0 && ::unlockpt(master) == 0);
        path = ::ptsname(master);
        std::string error;
        port = probes::open_serial_port(path, error);
        ASSERT_TRUE(port) << error;
    }
    void TearDown() override { close_master(); }
    void close_master() {
        if (master >= 0) {
            ::close(master);
        }
        master = -1;
    }
    int master = -1;
    std::string path;
    std::unique_ptr<probes::byte_port> port;
};

// A read's timeout is seen end to end, on a terminal where no PPK2 answers.
TEST_F(SerialPort, InterruptWakesABlockedReadAndEveryLaterOne) {
    char byte;
    std::ptrdiff_t result = -2;
    std::thread reader([&] { result = port->read(&byte, 1, -1); });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    port->interrupt();
    reader.join();
    EXPECT_EQ(result, 0);
    ASSERT_EQ(::write(master, "x", 1), 1);
    EXPECT_EQ(port->read(&byte, 1, -1), 0);
}

// A failing read is seen end to end, when the emulator goes.
TEST_F(SerialPort, TheOtherSideClosingFailsAWrite) {
    close_master();
    const char byte = 0;
    EXPECT_FALSE(port->write(&byte, 1));
    EXPECT_EQ(port->error(), "the port '" + path + "' is gone");
}

TEST_F(SerialPort, AWriteNobodyTakesFailsInsteadOfHanging) {
    const std::vector<char> lots(1 << 20);
    EXPECT_FALSE(port->write(lots.data(), lots.size()));
    EXPECT_EQ(port->error(), "can't write to the port '" + path + "': the device takes no data");
}

// /dev/null and a port in use are refused end to end.
TEST_F(SerialPort, RefusesWhatIsNoTerminal) {
    const auto folder =
        std::filesystem::temp_directory_path() / ("serial_refusals_" + std::to_string(::getpid()));
    std::filesystem::create_directories(folder);
    const std::string file = (folder / "samples.bin").string();
    const std::string fifo = (folder / "fifo").string();
    std::ofstream(file) << "not a port";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const std::pair<std::string, std::string> cases[] = {
        {file, "it is a regular file, not a serial port"},
        {folder.string(), "it is a directory, not a serial port"},
        {fifo, "it is a FIFO, not a serial port"},
        {(folder / "ttyACM9").string(), "No such file or directory"},
        {"", "No such file or directory"},
    };
    for (const auto& [name, reason] : cases) {
        std::string error;
        EXPECT_FALSE(probes::open_serial_port(name, error));
        EXPECT_EQ(error, "can't open the port '" + name + "': " + reason);
    }
    std::filesystem::remove_all(folder);
}

}  // namespace
