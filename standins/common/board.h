#pragma once

// The simulated target as the probe simulator sees it: a supply and a cycle of
// operating modes, each drawing a constant current for a fixed time while it
// runs some functions of the firmware. Integer units keep a conversion exact.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace standin {

// A function of the firmware: its code occupies [start, end).
struct code_region {
    std::string name;
    uint64_t start = 0;
    uint64_t end = 0;
};

// A function that runs in a mode, with its share of the program-counter
// samples taken there, in hundredths of a percent.
struct mode_code {
    std::string function;
    uint32_t share = 0;
    size_t region = 0;  // Index into board_model::functions, set by the reader.
};

struct operating_mode {
    std::string name;
    int64_t current_na = 0;
    int64_t time_us = 0;
    std::vector<mode_code> code;  // Shares add up to 10000, or the list is empty.
};

// A code the firmware writes on the probe's logic inputs D0-D7 while a
// function or mode of the board runs; 0 is no mark.
struct code_marker {
    uint32_t code = 0;  // 1 to 255.
    std::string name;   // A function or a mode of the board.
};

struct board_model {
    std::string target;
    int64_t supply_uv = 0;
    int64_t source_resistance_mohm = 0;       // Lowers the voltage under load.
    int64_t noise_ppm = 0;                    // Noise of a current reading, relative.
    int64_t noise_floor_na = 0;               // Noise of a current reading, absolute.
    std::optional<int64_t> trigger_delay_us;  // Hardware trigger after start, if wired.
    // Who supplies the target: its own supply with an ampere meter in the
    // line, or the probe itself at supply_uv.
    bool powered_by_probe = false;
    std::optional<uint32_t> trigger_input;  // The probe's logic input D<n> that starts a capture.
    std::vector<operating_mode> modes;      // In cycle order; the cycle repeats.
    std::vector<code_region> functions;
    std::vector<code_marker> markers;

    int64_t cycle_us() const;
};

// Limits that keep every product of the simulator in 64 bits.
inline constexpr int64_t max_current_na = 100'000'000'000;  // 100 A
inline constexpr int64_t max_supply_uv = 100'000'000;       // 100 V
inline constexpr int64_t max_mode_time_us = 3'600'000'000;  // 1 hour
inline constexpr int64_t max_resistance_mohm = 1'000'000;   // 1 kOhm
inline constexpr size_t max_modes = 64;
// What a probe that powers the target can supply, and its logic inputs.
inline constexpr int64_t min_probe_supply_uv = 800'000;
inline constexpr int64_t max_probe_supply_uv = 5'000'000;
inline constexpr uint32_t logic_inputs = 8;
inline constexpr uint32_t max_marker_code = (1u << logic_inputs) - 1;

}  // namespace standin
