#pragma once

// The PPK2's commands as they arrive: raw bytes with no framing, split across
// reads anywhere. The parser keeps a command whose argument is still missing
// until the rest comes. Owned by the device, on the serving thread.

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace ppk2_emulator {

enum class opcode : uint8_t {
    average_start = 0x06,
    average_stop = 0x07,
    device_running_set = 0x0C,
    regulator_set = 0x0D,
    set_power_mode = 0x11,
    spike_filter_on = 0x15,
    spike_filter_off = 0x16,
    get_metadata = 0x19,
    reset = 0x20,
};

struct command {
    uint8_t code = 0;
    uint32_t argument = 0;  // Big-endian when it has two bytes.
    bool known = true;      // An unknown byte comes as a command of its own.
};

// The command-log line: `start`, `mode 2`, `regulator 3300`, `unknown 0xab`...
std::string describe(const command& c);

class command_parser {
  public:
    // The commands that `bytes` completes, in order.
    std::vector<command> feed(std::span<const uint8_t> bytes);

  private:
    command pending_;
    int missing_ = 0;  // Argument bytes still to come for pending_.
};

}  // namespace ppk2_emulator
