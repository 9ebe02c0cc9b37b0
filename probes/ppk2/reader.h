#pragma once

// Takes the PPK2's stream off its port on a thread of its own, decodes it in
// blocks as they come, and hands the samples to one consumer thread through
// a ring that holds seconds of them. When the consumer falls behind and the
// ring is full, the newest samples are dropped and counted: the next sample
// that gets in carries them in its lost_before, so a consumer places the gap
// where it was.
//
// stop() interrupts the port, which reads nothing more afterwards: a reader
// is for one stream, and the next use case opens the port anew.

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "ppk2/stream_decoder.h"
#include "serial/byte_port.h"

namespace probes::ppk2 {

struct reader_sizes {
    size_t ring_samples = size_t{1} << 18;  // 2.6 s of samples.
    size_t read_bytes = 16384;              // 40 ms of the stream per read at most.
    int read_timeout_ms = 500;              // Only bounds a wait; stop() interrupts it.
};

class reader {
  public:
    // Starts reading at once.
    reader(byte_port& port, const converter& convert, reader_sizes sizes = {});
    ~reader();
    reader(const reader&) = delete;
    reader& operator=(const reader&) = delete;

    // The consumer's side: appends up to `most` samples to `out`, waiting up
    // to `wait` for the first; 0 when none came in time or the reader ended.
    size_t take(std::vector<device_sample>& out, size_t most, std::chrono::milliseconds wait);

    // From any thread, any number of times; the reader ends at once.
    void stop();

    // True once the reader ended and everything it decoded was taken.
    bool finished() const;
    // Why it ended by itself: the port's error; empty after a stop.
    std::string failure() const;
    // Samples dropped for want of room in the ring (also in lost_before).
    uint64_t overflowed() const;
    decoder_totals totals() const;

  private:
    void run(size_t read_bytes, int read_timeout_ms);
    void push(const std::vector<device_sample>& decoded);

    byte_port& port_;
    stream_decoder decoder_;  // The reader thread's alone.
    std::atomic<bool> stopping_{false};

    mutable std::mutex mutex_;  // Guards everything below; the consumer waits on ready_.
    std::condition_variable ready_;
    std::vector<device_sample> ring_;
    size_t head_ = 0, size_ = 0;
    uint64_t pending_lost_ = 0;  // Dropped, for the next sample that gets in.
    uint64_t overflowed_ = 0;
    decoder_totals totals_;
    bool ended_ = false;
    std::string failure_;

    std::thread thread_;  // Last: it starts once the rest is there.
};

}  // namespace probes::ppk2
