#pragma once

// A serial port as a byte_port: a USB CDC-ACM instrument, a classic port, or
// any terminal device that stands in for one (a pseudo-terminal from socat,
// ser2net or an emulator). Raw 8-bit bytes both ways; the baud rate is left
// as the port has it, since USB instruments ignore it.

#include <memory>
#include <string>

#include "serial/byte_port.h"

namespace probes {

// How long write() waits for a port that takes no data before it fails, so
// that a stalled instrument can't hang whoever sends it a command.
constexpr int serial_write_limit_ms = 2000;

// The port `name` (a path such as /dev/ttyACM0 on POSIX; COM5 or \\.\COM12
// on Windows), opened for this process alone; null with `error` naming the
// port and the reason when it can't be used.
std::unique_ptr<byte_port> open_serial_port(const std::string& name, std::string& error);

}  // namespace probes
