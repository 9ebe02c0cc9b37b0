#pragma once

// A session with one PPK2 over its data port: the metadata handshake, the
// power mode, and starting and stopping the sample stream. The reader
// (reader.h) takes the stream while the session's thread sends commands:
// the port carries one reader and one writer at a time.
//
// Power: in source mode the PPK2 supplies the target, switched on by
// power_source() and off by stop(). In ampere mode the same switch closes
// the meter's path in the target's own supply line, so power_through()
// switches it on too and stop() leaves it on: the target keeps its own
// supply between use cases.
//
// Every end leaves the stream stopped, and in source mode the target off:
// stop() is idempotent and the destructor calls it. Owned and used by one
// thread.

#include <cstdint>
#include <string>

#include "ppk2/metadata.h"
#include "ppk2/protocol.h"
#include "serial/byte_port.h"

namespace probes::ppk2 {

struct session_timing {
    int reply_ms = 1000;        // For a whole metadata reply.
    int quiet_ms = 50;          // Silence that ends a drain.
    int drain_limit_ms = 2000;  // A stream that won't stop is not drained for longer.
    int tries = 3;
};

class session {
  public:
    explicit session(byte_port& port, session_timing timing = {}) : port_(port), timing_(timing) {}
    ~session() { stop(); }
    session(const session&) = delete;
    session& operator=(const session&) = delete;

    // Stops a stream left running, then reads the metadata, asking again
    // while stale bytes come before it. False with error().
    bool open();

    // `mv` from min_source_mv to max_source_mv.
    bool power_source(int32_t mv);
    bool power_through();

    bool start();
    // False with error() when a command could not be sent; its state is
    // then taken as ended all the same.
    bool stop();

    const metadata& info() const { return info_; }
    // For the conversion: the supply in source mode, else the regulator's
    // setting as the device reports it (as the instrument's own clients do).
    double regulator_volts() const;
    const std::string& error() const { return error_; }

  private:
    enum class answer { metadata, garbled, silent, failed };
    answer ask_for_metadata();
    bool drain();
    bool send(const command& c);

    byte_port& port_;
    const session_timing timing_;
    metadata info_;
    std::string error_;
    power_mode mode_ = power_mode::ampere;
    int32_t source_mv_ = 0;
    bool streaming_ = false;
    bool target_on_ = false;  // Only tracked in source mode, where stop() switches it off.
};

}  // namespace probes::ppk2
