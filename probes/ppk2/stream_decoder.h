#pragma once

// The PPK2's byte stream to device samples: frames its 4-byte words, counts
// lost samples from the words' counter, finds the frame again after a
// slipped byte, and smooths the spike a range switch leaves, as the
// instrument's own clients do so that figures agree with theirs.
//
// Framing: a frame is confirmed by `confirming_words` consecutive words
// whose counters each follow the last. A word whose counter does not follow
// ends the frame; the search then tries every byte offset from that word
// on, earliest first, so a plain loss (the frame holds) is found before a
// slip. Bytes skipped in the search are discarded, never decoded. Across a
// loss or a slip the samples lost are the counter's step, modulo 64: the
// words a slipped byte damaged count as lost. 64 or more lost in one run
// look like fewer (the counter has 6 bits).
//
// Owned and used by one thread.

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "ppk2/protocol.h"
#include "ppk2/word.h"

namespace probes::ppk2 {

struct device_sample {
    // Amperes, as a double: the calibration is a polynomial and the smoothing
    // running averages, and whole nanoamperes would round away the tenths
    // that the lowest range resolves.
    double current;
    uint32_t lost_before;  // Device samples lost between the previous one and this.
    uint8_t range;
    uint8_t logic;
    bool clipped;  // At the top of the highest range: the true current may be more.
};

struct decoder_totals {
    uint64_t samples = 0;
    uint64_t lost = 0;             // From counter steps.
    uint64_t resyncs = 0;          // Frames found after a search that skipped bytes.
    uint64_t discarded_bytes = 0;  // Skipped while searching.
};

class stream_decoder {
  public:
    static constexpr int confirming_words = 4;

    explicit stream_decoder(const converter& convert) : convert_(convert) {}

    // Appends the samples that `bytes` complete to `out`; at most
    // (bytes.size() + 16) / 4 of them. Allocates only if `out` lacks room.
    void feed(std::span<const uint8_t> bytes, std::vector<device_sample>& out);

    const decoder_totals& totals() const { return totals_; }

  private:
    void search(std::vector<device_sample>& out);
    void emit(uint32_t word, uint32_t lost, std::vector<device_sample>& out);
    double smoothed(double amperes, uint8_t range);

    const converter convert_;
    decoder_totals totals_;

    bool framed_ = false;
    bool ever_framed_ = false;  // Before the first frame nothing counts as lost.
    uint8_t expected_ = 0;      // Counter of the next word in frame.
    // Bytes not yet decided: a partial word in frame, or the search's window.
    std::array<uint8_t, confirming_words * word_size> held_{};
    size_t held_size_ = 0;
    bool skipped_ = false;  // The current search discarded bytes.

    // Range-switch smoothing.
    static constexpr double alpha = 0.18, alpha_top = 0.06;
    static constexpr int smoothed_after_switch = 3;
    bool started_ = false;
    double average_ = 0, average_top_ = 0;
    uint8_t previous_range_ = 0;
    int smoothing_left_ = 0;
    int samples_in_range_ = 0;
};

}  // namespace probes::ppk2
