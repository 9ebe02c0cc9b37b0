#include "emulator_commands.h"

#include <cstdio>

namespace ppk2_emulator {

namespace {

int argument_bytes(uint8_t code) {
    switch (static_cast<opcode>(code)) {
        case opcode::device_running_set:
        case opcode::set_power_mode:
            return 1;
        case opcode::regulator_set:
            return 2;
        default:
            return 0;
    }
}

bool is_known(uint8_t code) {
    switch (static_cast<opcode>(code)) {
        case opcode::average_start:
        case opcode::average_stop:
        case opcode::device_running_set:
        case opcode::regulator_set:
        case opcode::set_power_mode:
        case opcode::spike_filter_on:
        case opcode::spike_filter_off:
        case opcode::get_metadata:
        case opcode::reset:
            return true;
    }
    return false;
}

}  // namespace

std::string describe(const command& c) {
    const std::string argument = std::to_string(c.argument);
    switch (static_cast<opcode>(c.code)) {
        case opcode::average_start:
            return "start";
        case opcode::average_stop:
            return "stop";
        case opcode::device_running_set:
            return "power " + argument;
        case opcode::regulator_set:
            return "regulator " + argument;
        case opcode::set_power_mode:
            return "mode " + argument;
        case opcode::spike_filter_on:
            return "filter on";
        case opcode::spike_filter_off:
            return "filter off";
        case opcode::get_metadata:
            return "metadata";
        case opcode::reset:
            return "reset";
    }
    char text[24];
    std::snprintf(text, sizeof text, "unknown 0x%02x", c.code);
    return text;
}

std::vector<command> command_parser::feed(std::span<const uint8_t> bytes) {
    std::vector<command> done;
    for (const uint8_t byte : bytes) {
        if (missing_ > 0) {
            pending_.argument = pending_.argument << 8 | byte;
            if (--missing_ == 0) {
                done.push_back(pending_);
            }
            continue;
        }
        pending_ = {byte, 0, is_known(byte)};
        missing_ = pending_.known ? argument_bytes(byte) : 0;
        if (missing_ == 0) {
            done.push_back(pending_);
        }
    }
    return done;
}

}  // namespace ppk2_emulator
