#pragma once

// The emulator's command line. Times of faults count from the start of the
// stream (AverageStart); a sample is 10 us.

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace ppk2_emulator {

struct logic_step {
    uint8_t inputs = 0;  // D0 in bit 0.
    int64_t us = 0;
};

struct lose_fault {
    uint64_t samples = 0;
    int64_t at_ms = 0;
};

struct stall_fault {
    int64_t ms = 0;
    int64_t at_ms = 0;
};

struct options {
    std::string board;
    std::optional<std::string> link;
    std::optional<int> fd;
    std::optional<std::string> report;
    std::optional<std::string> command_log;
    std::optional<std::string> record;
    uint64_t report_samples = UINT64_MAX;  // The report sums the stream's first this many.
    std::vector<logic_step> logic;         // Repeats; empty: all inputs low.
    std::optional<int> rise_input;
    int64_t rise_at_ms = 0;
    std::vector<lose_fault> lose;
    std::vector<int64_t> slip_at_ms;
    std::vector<stall_fault> stall;
    uint64_t stale_bytes = 0;
    int64_t backlog_s = 10;  // Unread stream the device holds before it loses samples.
    bool uncalibrated = false;
    bool help = false;
};

class usage_error : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Throws usage_error naming the option at fault.
options parse_options(const std::vector<std::string>& args);

extern const char* const help_text;

}  // namespace ppk2_emulator
