#include "ppk2/stream_decoder.h"

#include <algorithm>

namespace probes::ppk2 {
namespace {

uint8_t counter_of(uint32_t word) {
    return static_cast<uint8_t>((word >> 18) & 0x3f);
}

uint8_t step(uint8_t from, uint8_t to) {
    return static_cast<uint8_t>((to - from) & (counter_modulus - 1));
}

}  // namespace

void stream_decoder::feed(std::span<const uint8_t> bytes, std::vector<device_sample>& out) {
    size_t i = 0;
    const size_t n = bytes.size();
    while (i < n) {
        if (framed_ && held_size_ == 0) {
            // In frame, whole words straight from the input.
            for (; i + word_size <= n; i += word_size) {
                const uint32_t word = load_word(&bytes[i]);
                if (counter_of(word) != expected_) {
                    framed_ = false;
                    break;
                }
                emit(word, 0, out);
            }
            if (framed_) {
                while (i < n) {
                    held_[held_size_++] = bytes[i++];
                }
                return;
            }
        }
        held_[held_size_++] = bytes[i++];
        if (framed_ && held_size_ == word_size) {
            const uint32_t word = load_word(held_.data());
            if (counter_of(word) == expected_) {
                emit(word, 0, out);
                held_size_ = 0;
            } else {
                framed_ = false;
            }
        }
        if (!framed_) {
            search(out);
        }
    }
}

void stream_decoder::search(std::vector<device_sample>& out) {
    if (held_size_ < held_.size()) {
        return;
    }
    std::array<uint32_t, confirming_words> words{};
    bool follows = true;
    for (int w = 0; w < confirming_words; ++w) {
        words[w] = load_word(&held_[w * word_size]);
        follows = follows && (w == 0 || counter_of(words[w]) == ((counter_of(words[w - 1]) + 1) &
                                                                 (counter_modulus - 1)));
    }
    if (!follows) {
        std::copy(held_.begin() + 1, held_.end(), held_.begin());
        --held_size_;
        ++totals_.discarded_bytes;
        skipped_ = true;
        return;
    }
    if (ever_framed_ && skipped_) {
        ++totals_.resyncs;
    }
    emit(words[0], ever_framed_ ? step(expected_, counter_of(words[0])) : 0, out);
    for (int w = 1; w < confirming_words; ++w) {
        emit(words[w], 0, out);
    }
    held_size_ = 0;
    framed_ = ever_framed_ = true;
    skipped_ = false;
}

void stream_decoder::emit(uint32_t word, uint32_t lost, std::vector<device_sample>& out) {
    const word_fields f = split_word(word);
    const double amperes = smoothed(convert_.amperes(f.range, f.adc), f.range);
    out.push_back(
        {amperes, lost, f.range, f.logic, f.range == range_count - 1 && f.adc == adc_full_scale});
    expected_ = static_cast<uint8_t>((f.counter + 1) & (counter_modulus - 1));
    ++totals_.samples;
    totals_.lost += lost;
}

double stream_decoder::smoothed(double amperes, uint8_t range) {
    const double before = average_, before_top = average_top_;
    if (!started_) {
        average_ = average_top_ = amperes;
        previous_range_ = range;
        started_ = true;
    } else {
        average_ = alpha * amperes + (1 - alpha) * average_;
        average_top_ = alpha_top * amperes + (1 - alpha_top) * average_top_;
    }
    double value = amperes;
    if (range != previous_range_ || smoothing_left_ > 0) {
        if (range != previous_range_) {
            samples_in_range_ = 0;
            smoothing_left_ = smoothed_after_switch;
        } else {
            ++samples_in_range_;
        }
        if (range == range_count - 1) {
            // Entering the top range the averages still hold the spike's
            // first samples out.
            if (samples_in_range_ < 2) {
                average_ = before;
                average_top_ = before_top;
            }
            value = average_top_;
        } else {
            value = average_;
        }
        --smoothing_left_;
    }
    previous_range_ = range;
    return value;
}

}  // namespace probes::ppk2
