#include <libudev.h>

#include <memory>

#include "serial/usb_discovery_order.h"

namespace probes {

namespace {

struct udev_release {
    void operator()(udev* context) const { udev_unref(context); }
    void operator()(udev_enumerate* list) const { udev_enumerate_unref(list); }
    void operator()(udev_device* device) const { udev_device_unref(device); }
};

std::string text_of(const char* value) {
    return value ? value : "";
}

// The udev property, or when udev's database lacks it (no udevd, as in many
// containers) the attribute of the USB ancestor, read from sysfs.
std::string property_or_attribute(udev_device* tty, const char* property, udev_device* ancestor,
                                  const char* attribute) {
    std::string value = text_of(udev_device_get_property_value(tty, property));
    if (value.empty() && ancestor) {
        value = text_of(udev_device_get_sysattr_value(ancestor, attribute));
    }
    return value;
}

}  // namespace

std::vector<usb_serial_port> find_usb_serial_ports(uint16_t vendor_id, uint16_t product_id,
                                                   std::string& error) {
    std::vector<usb_serial_port> ports;
    std::unique_ptr<udev, udev_release> context(udev_new());
    if (!context) {
        error = "can't list the USB serial ports: udev is not available";
        return ports;
    }
    std::unique_ptr<udev_enumerate, udev_release> list(udev_enumerate_new(context.get()));
    if (!list || udev_enumerate_add_match_subsystem(list.get(), "tty") < 0 ||
        udev_enumerate_scan_devices(list.get()) < 0) {
        error = "can't list the USB serial ports: udev can't enumerate the tty devices";
        return ports;
    }
    udev_list_entry* entry = nullptr;
    udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(list.get())) {
        std::unique_ptr<udev_device, udev_release> tty(
            udev_device_new_from_syspath(context.get(), udev_list_entry_get_name(entry)));
        const char* node = tty ? udev_device_get_devnode(tty.get()) : nullptr;
        if (!node) {
            continue;
        }
        // Parents belong to the child: not released here.
        udev_device* usb_device =
            udev_device_get_parent_with_subsystem_devtype(tty.get(), "usb", "usb_device");
        udev_device* usb_interface =
            udev_device_get_parent_with_subsystem_devtype(tty.get(), "usb", "usb_interface");
        const int vendor =
            parse_hex(property_or_attribute(tty.get(), "ID_VENDOR_ID", usb_device, "idVendor"));
        const int product =
            parse_hex(property_or_attribute(tty.get(), "ID_MODEL_ID", usb_device, "idProduct"));
        if (vendor != vendor_id || product != product_id) {
            continue;
        }
        usb_serial_port port;
        port.path = node;
        port.serial_number =
            property_or_attribute(tty.get(), "ID_SERIAL_SHORT", usb_device, "serial");
        port.interface_number = parse_hex(property_or_attribute(tty.get(), "ID_USB_INTERFACE_NUM",
                                                                usb_interface, "bInterfaceNumber"));
        ports.push_back(std::move(port));
    }
    sort_usb_serial_ports(ports);
    return ports;
}

}  // namespace probes
