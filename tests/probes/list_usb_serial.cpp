// What the port and discovery tests run where they can't call the code
// themselves (under umockdev's preload, under Wine):
//   list_usb_serial VID PID      the ports found, "path serial interface" a line
//   list_usb_serial --echo PATH  prints "open", then sends back the first line
//                                it receives after "echo:"
//   list_usb_serial --wake PATH  "timeout" if a read times out, then "woke" if
//                                interrupt() ends a blocked read
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#include "serial/serial_port.h"
#include "serial/usb_discovery.h"

namespace {

int failed(const std::string& error) {
    std::fprintf(stderr, "%s\n", error.c_str());
    return 1;
}

int use_port(const std::string& mode, const std::string& path) {
    std::string error;
    auto port = probes::open_serial_port(path, error);
    if (!port) {
        return failed(error);
    }
    char byte = 0;
    if (mode == "--wake") {
        std::printf("%s\n", port->read(&byte, 1, 300) == 0 ? "timeout" : "no timeout");
        std::ptrdiff_t woken = -2;
        std::thread reader([&] { woken = port->read(&byte, 1, -1); });
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        port->interrupt();
        reader.join();
        std::printf("%s\n", woken == 0 ? "woke" : "not woken");
        return 0;
    }
    std::printf("open\n");
    std::fflush(stdout);
    std::string line = "echo:";
    while (byte != '\n') {
        const auto got = port->read(&byte, 1, 10000);
        if (got <= 0) {
            return failed(got < 0 ? port->error() : "no line came");
        }
        line += byte;
    }
    return port->write(line.data(), line.size()) ? 0 : failed(port->error());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        return failed("usage: list_usb_serial VID PID | --echo PATH | --wake PATH");
    }
    if (argv[1][0] == '-') {
        return use_port(argv[1], argv[2]);
    }
    std::string error;
    const auto ports = probes::find_usb_serial_ports(
        static_cast<uint16_t>(std::strtoul(argv[1], nullptr, 16)),
        static_cast<uint16_t>(std::strtoul(argv[2], nullptr, 16)), error);
    if (!error.empty()) {
        return failed(error);
    }
    for (const auto& port : ports) {
        std::printf("%s %s %d\n", port.path.c_str(), port.serial_number.c_str(),
                    port.interface_number);
    }
    return 0;
}
