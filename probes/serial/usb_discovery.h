#pragma once

// Finds the serial ports that USB devices of one kind (vendor and product
// ID) show, so that an instrument can be used without naming its port.

#include <cstdint>
#include <string>
#include <vector>

namespace probes {

struct usb_serial_port {
    std::string path;           // What open_serial_port() takes: /dev/ttyACM0, COM5.
    std::string serial_number;  // The USB device's, empty when it has none.
    // The USB interface the port belongs to; a device with several ports
    // (a data port and a debug shell) tells them apart by it. -1 if unknown.
    int interface_number = -1;
};

// The ports of the devices with these IDs that are attached now, sorted by
// serial number, then interface, then path, so that one device's ports stand
// together and the order is the same from run to run. Empty with `error`
// set when the system can't be asked; empty and no error when none is found.
std::vector<usb_serial_port> find_usb_serial_ports(uint16_t vendor_id, uint16_t product_id,
                                                   std::string& error);

}  // namespace probes
