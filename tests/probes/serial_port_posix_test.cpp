// The serial port against a pseudo-terminal whose master side is the
// instrument.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>
#include <vector>

#include "serial/serial_port.h"

namespace {

using probes::open_serial_port;

// A pseudo-terminal: the test holds the master, the port opens `path`.
struct pty {
    pty() {
        master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
        EXPECT_GE(master, 0);
        EXPECT_EQ(::grantpt(master), 0);
        EXPECT_EQ(::unlockpt(master), 0);
        path = ::ptsname(master);
    }
    ~pty() { close_master(); }
    void close_master() {
        if (master >= 0) {
            ::close(master);
            master = -1;
        }
    }
    std::vector<unsigned char> read_master(size_t count) {
        std::vector<unsigned char> got;
        unsigned char buffer[512];
        while (got.size() < count) {
            const ssize_t n = ::read(master, buffer, sizeof buffer);
            if (n <= 0) {
                break;
            }
            got.insert(got.end(), buffer, buffer + n);
        }
        return got;
    }
    bool master_has_data() {
        pollfd wait = {master, POLLIN, 0};
        return ::poll(&wait, 1, 0) > 0;
    }
    int master = -1;
    std::string path;
};

std::vector<unsigned char> every_byte() {
    std::vector<unsigned char> bytes(256);
    for (size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<unsigned char>(i);
    }
    return bytes;
}

TEST(SerialPort, CarriesEveryByteValueUnchangedBothWays) {
    pty device;
    std::string error;
    auto port = open_serial_port(device.path, error);
    ASSERT_TRUE(port) << error;
    const auto bytes = every_byte();

    ASSERT_EQ(::write(device.master, bytes.data(), bytes.size()), 256);
    std::vector<unsigned char> got;
    unsigned char buffer[300];
    while (got.size() < bytes.size()) {
        const auto n = port->read(buffer, sizeof buffer, 5000);
        ASSERT_GT(n, 0) << port->error();
        got.insert(got.end(), buffer, buffer + n);
    }
    EXPECT_EQ(got, bytes);
    EXPECT_FALSE(device.master_has_data()) << "the port echoed what it received";

    ASSERT_TRUE(port->write(bytes.data(), bytes.size())) << port->error();
    EXPECT_EQ(device.read_master(bytes.size()), bytes);
    EXPECT_FALSE(device.master_has_data()) << "the port added bytes to what it sent";
}

TEST(SerialPort, ReadReturnsNothingAfterItsTimeout) {
    pty device;
    std::string error;
    auto port = open_serial_port(device.path, error);
    ASSERT_TRUE(port) << error;
    char byte;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(port->read(&byte, 1, 100), 0);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(100));
}

TEST(SerialPort, InterruptWakesABlockedReadAndEveryLaterOne) {
    pty device;
    std::string error;
    auto port = open_serial_port(device.path, error);
    ASSERT_TRUE(port) << error;
    std::ptrdiff_t result = -2;
    std::thread reader([&] {
        char byte;
        result = port->read(&byte, 1, -1);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    port->interrupt();
    reader.join();
    EXPECT_EQ(result, 0);

    ASSERT_EQ(::write(device.master, "x", 1), 1);
    char byte;
    EXPECT_EQ(port->read(&byte, 1, -1), 0);
}

TEST(SerialPort, TheOtherSideClosingIsAFailure) {
    for (const bool reading : {true, false}) {
        pty device;
        std::string error;
        auto port = open_serial_port(device.path, error);
        ASSERT_TRUE(port) << error;
        device.close_master();
        char byte = 0;
        if (reading) {
            EXPECT_EQ(port->read(&byte, 1, 5000), -1);
        } else {
            EXPECT_FALSE(port->write(&byte, 1));
        }
        EXPECT_EQ(port->error(), "the port '" + device.path + "' is gone");
    }
}

TEST(SerialPort, AWriteNobodyTakesFailsInsteadOfHanging) {
    pty device;
    std::string error;
    auto port = open_serial_port(device.path, error);
    ASSERT_TRUE(port) << error;
    const std::vector<char> lots(1 << 20);
    EXPECT_FALSE(port->write(lots.data(), lots.size()));
    EXPECT_EQ(port->error(),
              "can't write to the port '" + device.path + "': the device takes no data");
}

TEST(SerialPort, RefusesWhatIsNoTerminalOrInUse) {
    const auto folder =
        std::filesystem::temp_directory_path() / ("serial_refusals_" + std::to_string(::getpid()));
    std::filesystem::create_directories(folder);
    const std::string file = (folder / "samples.bin").string();
    const std::string fifo = (folder / "fifo").string();
    std::ofstream(file) << "not a port";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    pty device;
    std::string error;
    auto first = open_serial_port(device.path, error);
    ASSERT_TRUE(first) << error;

    const struct {
        std::string name;
        std::string reason;
    } cases[] = {
        {file, "it is a regular file, not a serial port"},
        {folder.string(), "it is a directory, not a serial port"},
        {fifo, "it is a FIFO, not a serial port"},
        {(folder / "ttyACM9").string(), "No such file or directory"},
        {"", "No such file or directory"},
        {"/dev/null", "it is not a terminal device"},
        {device.path, "it is already in use"},
    };
    for (const auto& refused : cases) {
        error.clear();
        EXPECT_FALSE(open_serial_port(refused.name, error));
        EXPECT_EQ(error, "can't open the port '" + refused.name + "': " + refused.reason);
    }
    std::filesystem::remove_all(folder);
}

}  // namespace
