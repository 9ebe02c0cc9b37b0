#pragma once

// The PPK2's serial protocol: raw command bytes, most of them unanswered.
// Only GetMetadata has a reply (text, see metadata.h); AverageStart starts
// the stream of sample words that word.h decodes.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace probes::ppk2 {

inline constexpr uint16_t usb_vendor_id = 0x1915;
inline constexpr uint16_t usb_product_id = 0xc00a;

// Device samples per second, fixed by the instrument.
inline constexpr int32_t device_rate = 100'000;
inline constexpr size_t word_size = 4;

// What the source meter can supply, in millivolts.
inline constexpr int32_t min_source_mv = 800;
inline constexpr int32_t max_source_mv = 5000;

enum class opcode : uint8_t {
    average_start = 0x06,
    average_stop = 0x07,
    device_running_set = 0x0c,
    regulator_set = 0x0d,
    set_power_mode = 0x11,
    spike_filtering_on = 0x15,
    spike_filtering_off = 0x16,
    get_metadata = 0x19,
    reset = 0x20,  // The port must be opened anew afterwards.
};

enum class power_mode : uint8_t { ampere = 1, source = 2 };

// One command as it goes on the wire: at most an opcode and two bytes.
struct command {
    std::array<uint8_t, 3> bytes{};
    size_t size = 0;

    bool operator==(const command&) const = default;
};

constexpr command simple(opcode op) {
    return {{static_cast<uint8_t>(op)}, 1};
}

constexpr command set_power_mode(power_mode mode) {
    return {{static_cast<uint8_t>(opcode::set_power_mode), static_cast<uint8_t>(mode)}, 2};
}

// Clamped to what the regulator can do, so a caller's slip never reaches the target.
constexpr command regulator_set(int32_t mv) {
    const auto v = static_cast<uint16_t>(std::clamp(mv, min_source_mv, max_source_mv));
    return {{static_cast<uint8_t>(opcode::regulator_set), static_cast<uint8_t>(v >> 8),
             static_cast<uint8_t>(v & 0xff)},
            3};
}

constexpr command device_running_set(bool on) {
    return {{static_cast<uint8_t>(opcode::device_running_set), static_cast<uint8_t>(on ? 1 : 0)},
            2};
}

}  // namespace probes::ppk2
