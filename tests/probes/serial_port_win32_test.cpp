// The serial port and discovery on Windows, where no port need exist.
#include <gtest/gtest.h>

#include "serial/serial_port.h"
#include "serial/usb_discovery.h"

namespace {

TEST(SerialPort, AMissingPortIsNamedInTheRefusal) {
    for (const std::string name : {"COM199", "com199", "\\\\.\\COM199"}) {
        std::string error;
        EXPECT_FALSE(probes::open_serial_port(name, error));
        EXPECT_EQ(error, "can't open the port '" + name + "': there is no such port");
    }
}

TEST(UsbDiscovery, ListsOnlyComPortsWithoutError) {
    std::string error;
    for (const auto& port : probes::find_usb_serial_ports(0x1915, 0xc00a, error)) {
        EXPECT_EQ(port.path.rfind("COM", 0), 0u) << port.path;
    }
    EXPECT_EQ(error, "");
}

}  // namespace
