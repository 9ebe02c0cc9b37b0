#include "ppk2/reader.h"

#include <algorithm>
#include <limits>

namespace probes::ppk2 {

reader::reader(byte_port& port, const converter& convert, reader_sizes sizes)
    : port_(port), decoder_(convert), ring_(std::max<size_t>(sizes.ring_samples, 1)) {
    thread_ = std::thread([this, sizes] { run(sizes.read_bytes, sizes.read_timeout_ms); });
}

reader::~reader() {
    stop();
    thread_.join();
}

void reader::stop() {
    stopping_ = true;
    port_.interrupt();
}

void reader::run(size_t read_bytes, int read_timeout_ms) {
    std::vector<uint8_t> bytes(std::max<size_t>(read_bytes, word_size));
    std::vector<device_sample> decoded;
    decoded.reserve(bytes.size() / word_size + stream_decoder::confirming_words + 1);
    std::string failure;
    while (!stopping_) {
        const auto got = port_.read(bytes.data(), bytes.size(), read_timeout_ms);
        if (got < 0) {
            failure = port_.error();
            break;
        }
        if (got > 0) {
            decoded.clear();
            decoder_.feed({bytes.data(), static_cast<size_t>(got)}, decoded);
            push(decoded);
        }
    }
    {
        std::lock_guard<std::mutex> lock(mutex_);
        ended_ = true;
        failure_ = stopping_ ? std::string() : failure;
    }
    ready_.notify_all();
}

void reader::push(const std::vector<device_sample>& decoded) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        totals_ = decoder_.totals();
        const size_t fits = std::min(decoded.size(), ring_.size() - size_);
        for (size_t i = 0; i < fits; ++i) {
            device_sample s = decoded[i];
            // A count too large for one sample spreads over the next ones.
            const uint64_t room = std::numeric_limits<uint32_t>::max() - s.lost_before;
            const uint64_t carried = std::min(pending_lost_, room);
            s.lost_before += static_cast<uint32_t>(carried);
            pending_lost_ -= carried;
            ring_[(head_ + size_) % ring_.size()] = s;
            ++size_;
        }
        for (size_t i = fits; i < decoded.size(); ++i) {
            pending_lost_ += 1 + uint64_t{decoded[i].lost_before};
            ++overflowed_;
        }
    }
    ready_.notify_one();
}

size_t reader::take(std::vector<device_sample>& out, size_t most, std::chrono::milliseconds wait) {
    std::unique_lock<std::mutex> lock(mutex_);
    ready_.wait_for(lock, wait, [this] { return size_ > 0 || ended_; });
    const size_t n = std::min(size_, most);
    for (size_t i = 0; i < n; ++i) {
        out.push_back(ring_[head_]);
        head_ = (head_ + 1) % ring_.size();
    }
    size_ -= n;
    return n;
}

bool reader::finished() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return ended_ && size_ == 0;
}

std::string reader::failure() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return failure_;
}

uint64_t reader::overflowed() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return overflowed_;
}

decoder_totals reader::totals() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return totals_;
}

}  // namespace probes::ppk2
