#include "ppk2/session.h"

#include <algorithm>
#include <array>
#include <chrono>

namespace probes::ppk2 {
namespace {

using clock = std::chrono::steady_clock;

int ms_until(clock::time_point deadline) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - clock::now());
    return static_cast<int>(std::max<int64_t>(left.count(), 0));
}

}  // namespace

bool session::send(const command& c) {
    if (port_.write(c.bytes.data(), c.size)) {
        return true;
    }
    error_ = port_.error();
    return false;
}

// Reads until the port has been quiet for a while, or gives up on a stream
// that keeps coming; either way the metadata request follows.
bool session::drain() {
    std::array<uint8_t, 4096> scratch;
    const auto deadline = clock::now() + std::chrono::milliseconds(timing_.drain_limit_ms);
    while (clock::now() < deadline) {
        const auto got = port_.read(scratch.data(), scratch.size(), timing_.quiet_ms);
        if (got == 0) {
            return true;
        }
        if (got < 0) {
            error_ = port_.error();
            return false;
        }
    }
    return true;
}

session::answer session::ask_for_metadata() {
    if (!send(simple(opcode::average_stop)) || !drain() || !send(simple(opcode::get_metadata))) {
        return answer::failed;
    }
    std::string reply;
    std::array<char, 512> chunk;
    const auto deadline = clock::now() + std::chrono::milliseconds(timing_.reply_ms);
    for (;;) {
        const int wait = ms_until(deadline);
        const auto got = wait > 0 ? port_.read(chunk.data(), chunk.size(), wait) : 0;
        if (got < 0) {
            error_ = port_.error();
            return answer::failed;
        }
        if (got == 0) {
            return reply.empty() ? answer::silent : answer::garbled;
        }
        reply.append(chunk.data(), static_cast<size_t>(got));
        metadata_reply parsed = parse_metadata(reply);
        if (parsed.state == reply_state::complete) {
            info_ = std::move(parsed.data);
            return answer::metadata;
        }
        if (parsed.state == reply_state::garbled) {
            return answer::garbled;
        }
    }
}

bool session::open() {
    // The stream may be running from a session that ended without a stop.
    streaming_ = true;
    for (int attempt = 0; attempt < timing_.tries; ++attempt) {
        switch (ask_for_metadata()) {
            case answer::metadata:
                streaming_ = false;
                return true;
            case answer::failed:
                return false;
            case answer::silent:
                streaming_ = false;  // Nothing streams, and a stranger needs no more bytes.
                error_ = "no metadata from the device within " + std::to_string(timing_.reply_ms) +
                         " ms: not a PPK2, or not its data port";
                return false;
            case answer::garbled:
                break;
        }
    }
    error_ = "no readable metadata from the device in " + std::to_string(timing_.tries) +
             " tries: its data does not stop, or it is not a PPK2";
    return false;
}

bool session::power_source(int32_t mv) {
    if (mv < min_source_mv || mv > max_source_mv) {
        error_ = "source voltage " + std::to_string(mv) + " mV is out of range; a PPK2 supplies " +
                 std::to_string(min_source_mv) + " to " + std::to_string(max_source_mv) + " mV";
        return false;
    }
    mode_ = power_mode::source;
    source_mv_ = mv;
    if (!send(set_power_mode(mode_)) || !send(regulator_set(mv))) {
        return false;
    }
    target_on_ = true;  // Possibly on even if the write fails: stop() switches it off.
    return send(device_running_set(true));
}

bool session::power_through() {
    mode_ = power_mode::ampere;
    return send(set_power_mode(mode_)) && send(device_running_set(true));
}

bool session::start() {
    streaming_ = true;
    return send(simple(opcode::average_start));
}

bool session::stop() {
    bool sent = true;
    if (streaming_) {
        streaming_ = false;
        sent = send(simple(opcode::average_stop));
    }
    if (target_on_) {
        target_on_ = false;
        sent = send(device_running_set(false)) && sent;
    }
    return sent;
}

double session::regulator_volts() const {
    if (mode_ == power_mode::source) {
        return source_mv_ / 1000.0;
    }
    return info_.vdd_mv.value_or(0) / 1000.0;
}

}  // namespace probes::ppk2
