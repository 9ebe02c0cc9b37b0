#include <algorithm>
#include <cctype>
#include <tuple>

#include "serial/usb_discovery_order.h"

namespace probes {

namespace {

// Compares names with their runs of digits as numbers: ttyACM2 before
// ttyACM10, COM9 before COM10.
bool natural_less(const std::string& a, const std::string& b) {
    size_t i = 0;
    size_t j = 0;
    while (i < a.size() && j < b.size()) {
        if (std::isdigit(static_cast<unsigned char>(a[i])) &&
            std::isdigit(static_cast<unsigned char>(b[j]))) {
            const size_t a_end = a.find_first_not_of("0123456789", i);
            const size_t b_end = b.find_first_not_of("0123456789", j);
            std::string x = a.substr(i, a_end == std::string::npos ? a_end : a_end - i);
            std::string y = b.substr(j, b_end == std::string::npos ? b_end : b_end - j);
            x.erase(0, std::min(x.find_first_not_of('0'), x.size() - 1));
            y.erase(0, std::min(y.find_first_not_of('0'), y.size() - 1));
            if (x.size() != y.size() || x != y) {
                return x.size() != y.size() ? x.size() < y.size() : x < y;
            }
            i = a_end == std::string::npos ? a.size() : a_end;
            j = b_end == std::string::npos ? b.size() : b_end;
        } else if (a[i] != b[j]) {
            return a[i] < b[j];
        } else {
            ++i;
            ++j;
        }
    }
    return a.size() - i < b.size() - j || (a.size() - i == b.size() - j && a < b);
}

}  // namespace

void sort_usb_serial_ports(std::vector<usb_serial_port>& ports) {
    std::stable_sort(ports.begin(), ports.end(), [](const auto& a, const auto& b) {
        if (a.serial_number != b.serial_number) {
            return a.serial_number < b.serial_number;
        }
        if (a.interface_number != b.interface_number) {
            return a.interface_number < b.interface_number;
        }
        return natural_less(a.path, b.path);
    });
}

int parse_hex(const std::string& text) {
    if (text.empty() || text.size() > 6) {
        return -1;
    }
    int value = 0;
    for (const char c : text) {
        const int digit = std::isdigit(static_cast<unsigned char>(c)) ? c - '0'
                          : (c >= 'a' && c <= 'f')                    ? c - 'a' + 10
                          : (c >= 'A' && c <= 'F')                    ? c - 'A' + 10
                                                                      : -1;
        if (digit < 0) {
            return -1;
        }
        value = value * 16 + digit;
    }
    return value;
}

}  // namespace probes
