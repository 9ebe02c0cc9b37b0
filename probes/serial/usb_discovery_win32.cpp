#include <windows.h>
// After windows.h, which they need.
#include <cfgmgr32.h>
#include <setupapi.h>

#include <cctype>

#include "serial/usb_discovery_order.h"

namespace probes {

namespace {

// The serial ports' device interface class, GUID_DEVINTERFACE_COMPORT.
const GUID com_ports = {
    0x86e0d1e0, 0x8089, 0x11d0, {0x9c, 0xe4, 0x08, 0x00, 0x3e, 0x30, 0x1f, 0x73}};

std::string upper(std::string text) {
    for (char& c : text) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return text;
}

// The value after `key` ("VID_", "MI_") in a hardware or instance ID, up to
// the next '&' or '\'.
std::string field(const std::string& id, const std::string& key) {
    size_t at = 0;
    while ((at = id.find(key, at)) != std::string::npos) {
        if (at == 0 || id[at - 1] == '\\' || id[at - 1] == '&') {
            const size_t start = at + key.size();
            return id.substr(start, id.find_first_of("&\\", start) - start);
        }
        at += key.size();
    }
    return "";
}

std::string device_id(DEVINST device) {
    char id[MAX_DEVICE_ID_LEN + 1] = {};
    return CM_Get_Device_IDA(device, id, sizeof id, 0) == CR_SUCCESS ? upper(id) : "";
}

// The serial number: the last part of the USB device's instance ID, which is
// the parent's when the port is one interface of a composite device.
std::string serial_of(DEVINST port, bool composite) {
    DEVINST usb = port;
    if (composite && CM_Get_Parent(&usb, port, 0) != CR_SUCCESS) {
        return "";
    }
    const std::string id = device_id(usb);
    const size_t slash = id.rfind('\\');
    // Windows makes up an ID with '&' in it for a device without a number.
    if (slash == std::string::npos || id.find('&', slash) != std::string::npos) {
        return "";
    }
    return id.substr(slash + 1);
}

std::string port_name(HDEVINFO devices, SP_DEVINFO_DATA& device) {
    const HKEY key =
        SetupDiOpenDevRegKey(devices, &device, DICS_FLAG_GLOBAL, 0, DIREG_DEV, KEY_READ);
    if (key == INVALID_HANDLE_VALUE) {
        return "";
    }
    char name[256] = {};
    DWORD size = sizeof name - 1;
    DWORD type = 0;
    const bool read = RegQueryValueExA(key, "PortName", nullptr, &type,
                                       reinterpret_cast<BYTE*>(name), &size) == ERROR_SUCCESS;
    RegCloseKey(key);
    return read && type == REG_SZ ? std::string(name) : "";
}

}  // namespace

std::vector<usb_serial_port> find_usb_serial_ports(uint16_t vendor_id, uint16_t product_id,
                                                   std::string& error) {
    std::vector<usb_serial_port> ports;
    const HDEVINFO devices =
        SetupDiGetClassDevsA(&com_ports, nullptr, nullptr, DIGCF_PRESENT | DIGCF_DEVICEINTERFACE);
    if (devices == INVALID_HANDLE_VALUE) {
        error = "can't list the serial ports: error " + std::to_string(GetLastError());
        return ports;
    }
    SP_DEVINFO_DATA device{};
    device.cbSize = sizeof device;
    for (DWORD index = 0; SetupDiEnumDeviceInfo(devices, index, &device); ++index) {
        // REG_MULTI_SZ: the most specific ID comes first.
        char ids[4096] = {};
        if (!SetupDiGetDeviceRegistryPropertyA(devices, &device, SPDRP_HARDWAREID, nullptr,
                                               reinterpret_cast<BYTE*>(ids), sizeof ids - 2,
                                               nullptr)) {
            continue;
        }
        const std::string id = upper(ids);
        if (id.rfind("USB\\", 0) != 0 || parse_hex(field(id, "VID_")) != vendor_id ||
            parse_hex(field(id, "PID_")) != product_id) {
            continue;
        }
        usb_serial_port port;
        port.path = port_name(devices, device);
        if (port.path.empty()) {
            continue;
        }
        const std::string interface_field = field(id, "MI_");
        port.interface_number = interface_field.empty() ? -1 : parse_hex(interface_field);
        port.serial_number = serial_of(device.DevInst, !interface_field.empty());
        ports.push_back(std::move(port));
    }
    SetupDiDestroyDeviceInfoList(devices);
    sort_usb_serial_ports(ports);
    return ports;
}

}  // namespace probes
