#pragma once

// A byte stream to an instrument: a serial port, a pseudo-terminal, or a
// fake in tests. The instrument's protocol code talks to this and nothing
// else, so that it runs the same on every platform and under test.

#include <cstddef>
#include <string>

namespace probes {

class byte_port {
  public:
    virtual ~byte_port() = default;

    // Up to `size` bytes into `into`, waiting at most `timeout_ms` for the
    // first of them. 0 when none came in time or after interrupt(); -1 on a
    // failure, which error() then describes.
    virtual std::ptrdiff_t read(void* into, size_t size, int timeout_ms) = 0;

    // All of `size` bytes, or false with error().
    virtual bool write(const void* data, size_t size) = 0;

    // From any thread, any number of times: a read() that waits returns 0
    // at once, and so does every later one.
    virtual void interrupt() = 0;

    // What the last failure was, for a message: "the port '/dev/ttyACM0'
    // is gone" and the like.
    virtual std::string error() const = 0;
};

}  // namespace probes
