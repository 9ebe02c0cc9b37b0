// What the discovery test runs under umockdev's preload: prints the ports
// that find_usb_serial_ports() returns, one "path serial interface" a line,
// or with --echo PATH opens the port, says "open", and sends back the first
// line it receives after "echo:", to show the port works on the testbed;
// with --interrupt PATH shows that a read times out and that interrupt()
// wakes a blocked one (where no test can make a port itself: under Wine).
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#include "serial/serial_port.h"
#include "serial/usb_discovery.h"

namespace {

int echo(const std::string& path) {
    std::string error;
    auto port = probes::open_serial_port(path, error);
    if (!port) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 1;
    }
    std::printf("open\n");
    std::fflush(stdout);
    std::string line = "echo:";
    char byte = 0;
    while (byte != '\n') {
        const auto got = port->read(&byte, 1, 10000);
        if (got <= 0) {
            std::fprintf(stderr, "%s\n", got < 0 ? port->error().c_str() : "no line came");
            return 1;
        }
        line += byte;
    }
    if (!port->write(line.data(), line.size())) {
        std::fprintf(stderr, "%s\n", port->error().c_str());
        return 1;
    }
    return 0;
}

int interrupt(const std::string& path) {
    std::string error;
    auto port = probes::open_serial_port(path, error);
    if (!port) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 1;
    }
    char byte;
    std::printf("%s\n", port->read(&byte, 1, 300) == 0 ? "timeout" : "no timeout");
    std::ptrdiff_t woken = -2;
    std::thread reader([&] { woken = port->read(&byte, 1, -1); });
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    port->interrupt();
    reader.join();
    std::printf("%s\n", woken == 0 ? "woke" : port->error().c_str());
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::string(argv[1]) == "--echo") {
        return echo(argv[2]);
    }
    if (argc == 3 && std::string(argv[1]) == "--interrupt") {
        return interrupt(argv[2]);
    }
    if (argc != 3) {
        std::fprintf(stderr, "usage: list_usb_serial VID PID | --echo PATH | --interrupt PATH\n");
        return 2;
    }
    std::string error;
    const auto ports = probes::find_usb_serial_ports(
        static_cast<uint16_t>(std::strtoul(argv[1], nullptr, 16)),
        static_cast<uint16_t>(std::strtoul(argv[2], nullptr, 16)), error);
    if (!error.empty()) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 1;
    }
    for (const auto& port : ports) {
        std::printf("%s %s %d\n", port.path.c_str(), port.serial_number.c_str(),
                    port.interface_number);
    }
    return 0;
}
