#pragma once

// What the platforms' discovery shares: the order of the ports it returns
// and reading the hexadecimal IDs that systems report.

#include <string>
#include <vector>

#include "serial/usb_discovery.h"

namespace probes {

// By serial number, then interface, then path with its numbers as numbers.
void sort_usb_serial_ports(std::vector<usb_serial_port>& ports);

// "1915", "c00a", "02": the value, or -1 when it is not hexadecimal.
int parse_hex(const std::string& text);

}  // namespace probes
