// A session and a reader against a scripted PPK2 on a fake port.

#include <gtest/gtest.h>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include "ppk2/reader.h"
#include "ppk2/session.h"

namespace {

using namespace probes::ppk2;
using namespace std::chrono_literals;

// Answers each GetMetadata with the next of `replies`, and gives what
// arrives in reads of at most `chunk` bytes.
class fake_port : public probes::byte_port {
  public:
    explicit fake_port(std::vector<std::string> replies = {}, size_t chunk = 4096)
        : replies_(std::move(replies)), chunk_(chunk) {}

    std::ptrdiff_t read(void* into, size_t size, int timeout_ms) override {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait_for(lock, std::chrono::milliseconds(timeout_ms),
                          [this] { return interrupted_ || broken_ || !incoming_.empty(); });
        if (interrupted_ || (incoming_.empty() && !broken_)) {
            return 0;
        }
        if (incoming_.empty()) {
            return -1;
        }
        const size_t n = std::min({size, chunk_, incoming_.size()});
        incoming_.copy(static_cast<char*>(into), n);
        incoming_.erase(0, n);
        return static_cast<std::ptrdiff_t>(n);
    }

    bool write(const void* data, size_t size) override {
        std::lock_guard<std::mutex> lock(mutex_);
        if (failing_writes_ > 0) {
            --failing_writes_;
            return false;
        }
        const auto* bytes = static_cast<const uint8_t*>(data);
        written_.insert(written_.end(), bytes, bytes + size);
        if (bytes[0] == 0x19 && asked_ < replies_.size()) {
            incoming_ += replies_[asked_++];
            changed_.notify_all();
        }
        return true;
    }

    void interrupt() override {
        std::lock_guard<std::mutex> lock(mutex_);
        interrupted_ = true;
        changed_.notify_all();
    }

    std::string error() const override { return "the port 'fake' is gone"; }

    void arrive(const std::string& bytes) {
        std::lock_guard<std::mutex> lock(mutex_);
        incoming_ += bytes;
        changed_.notify_all();
    }
    // Reads fail once what arrived is read.
    void break_down() {
        std::lock_guard<std::mutex> lock(mutex_);
        broken_ = true;
        changed_.notify_all();
    }
    void fail_writes(int count) {
        std::lock_guard<std::mutex> lock(mutex_);
        failing_writes_ = count;
    }
    std::vector<uint8_t> written() {
        std::lock_guard<std::mutex> lock(mutex_);
        return written_;
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::string> replies_;
    size_t asked_ = 0;
    const size_t chunk_;
    std::string incoming_;
    std::vector<uint8_t> written_;
    int failing_writes_ = 0;
    bool interrupted_ = false, broken_ = false;
};

const std::string good_reply = "Calibrated: 1\nR0: 1000\nVDD: 3000\nHW: 9173\nEND\n";
const std::string stale = std::string("\x0e\x40\x88\x5a\x0f\x40\x8c\x5a", 8);
const session_timing quick{200, 1, 200, 3};

TEST(ppk2_session, commands_in_order) {
    const struct {
        const char* name;
        std::vector<std::string> replies;
        std::function<bool(session&, fake_port&)> use;
        bool ok;
        std::vector<uint8_t> written;  // The session's destructor included.
        std::string error;
    } rows[] = {
        {"source mode",
         {good_reply},
         [](session& s, fake_port&) {
             return s.open() && s.power_source(3300) && s.start() && s.stop();
         },
         true,
         {0x07, 0x19, 0x11, 2, 0x0d, 0x0c, 0xe4, 0x0c, 1, 0x06, 0x07, 0x0c, 0},
         ""},
        {"ampere mode leaves the path closed",
         {good_reply},
         [](session& s, fake_port&) {
             return s.open() && s.power_through() && s.start() && s.stop();
         },
         true,
         {0x07, 0x19, 0x11, 1, 0x0c, 1, 0x06, 0x07},
         ""},
        {"stale bytes, then a clean reply",
         {stale + good_reply, good_reply},
         [](session& s, fake_port&) { return s.open(); },
         true,
         {0x07, 0x19, 0x07, 0x19},
         ""},
        {"stale bytes every time",
         {stale, stale + "END\n", stale},
         [](session& s, fake_port&) { return s.open(); },
         false,
         {0x07, 0x19, 0x07, 0x19, 0x07, 0x19, 0x07},
         "no readable metadata from the device in 3 tries: its data does not stop, or it is not a "
         "PPK2"},
        {"silence",
         {},
         [](session& s, fake_port&) { return s.open(); },
         false,
         {0x07, 0x19},
         "no metadata from the device within 200 ms: not a PPK2, or not its data port"},
        {"voltage out of range",
         {good_reply},
         [](session& s, fake_port&) { return s.open() && s.power_source(5001); },
         false,
         {0x07, 0x19},
         "source voltage 5001 mV is out of range; a PPK2 supplies 800 to 5000 mV"},
        {"a failed start still ends with the target off",
         {good_reply},
         [](session& s, fake_port& p) {
             const bool ok = s.open() && s.power_source(1800);
             p.fail_writes(1);
             return ok && !s.start() && s.stop() && s.stop();
         },
         true,
         {0x07, 0x19, 0x11, 2, 0x0d, 0x07, 0x08, 0x0c, 1, 0x07, 0x0c, 0},
         "the port 'fake' is gone"},
        {"a failed stop gives the port's error",
         {good_reply},
         [](session& s, fake_port& p) {
             const bool ok = s.open() && s.power_source(1800) && s.start();
             p.fail_writes(2);
             return ok && s.stop();
         },
         false,
         {0x07, 0x19, 0x11, 2, 0x0d, 0x07, 0x08, 0x0c, 1, 0x06},
         "the port 'fake' is gone"},
    };
    for (const auto& row : rows) {
        fake_port port(row.replies);
        std::string error;
        {
            session s(port, quick);
            EXPECT_EQ(row.use(s, port), row.ok) << row.name;
            error = s.error();
        }
        EXPECT_EQ(port.written(), row.written) << row.name;
        EXPECT_EQ(error, row.error) << row.name;
    }
}

TEST(ppk2_session, metadata_and_volts) {
    fake_port port({good_reply, good_reply});
    session s(port, quick);
    ASSERT_TRUE(s.open());
    EXPECT_EQ(s.info().cal.r[0], 1000);
    ASSERT_TRUE(s.power_through());
    EXPECT_EQ(s.regulator_volts(), 3.0);  // the device's own setting
    ASSERT_TRUE(s.power_source(1800));
    EXPECT_EQ(s.regulator_volts(), 1.8);
}

// `count` words counting from `first`, ADC 10 + i.
std::string words(int count, int first = 0) {
    std::string bytes;
    for (int i = first; i < first + count; ++i) {
        const uint32_t w = uint32_t(10 + i % 1000) | uint32_t(i & 63) << 18;
        bytes += {char(w), char(w >> 8), char(w >> 16), char(w >> 24)};
    }
    return bytes;
}

const converter identity = [] {
    calibration cal;
    cal.r.fill(4 * 1.8 / 163840), cal.gs.fill(0);
    return converter(cal, 0);
}();

std::vector<device_sample> take_all(reader& r, size_t count) {
    std::vector<device_sample> got;
    while (got.size() < count && !r.finished()) {
        r.take(got, count - got.size(), 5s);
    }
    return got;
}

TEST(ppk2_reader, keeps_up_with_a_fast_port) {
    fake_port port({}, 3001);  // reads that cut words anywhere
    port.arrive(words(100000));
    reader r(port, identity);
    const auto got = take_all(r, 100000);
    ASSERT_EQ(got.size(), 100000u);
    for (size_t i = 0; i < got.size(); i += 997) {
        EXPECT_EQ(got[i].lost_before, 0u);
        EXPECT_NEAR(got[i].current, 10 + i % 1000, 1e-9);
    }
    EXPECT_EQ(r.overflowed(), 0u);
    EXPECT_EQ(r.totals().lost, 0u);
}

TEST(ppk2_reader, a_slow_consumer_loses_counted_samples) {
    fake_port port;
    port.arrive(words(5000));
    reader r(port, identity, {1000, 4096, 500});
    while (r.totals().samples < 5000) {
        std::this_thread::sleep_for(1ms);
    }
    EXPECT_EQ(take_all(r, 1000).size(), 1000u);
    port.arrive(words(10, 5000));
    const auto after = take_all(r, 10);
    ASSERT_EQ(after.size(), 10u);
    EXPECT_EQ(after[0].lost_before, 4000u);
    EXPECT_EQ(after[0].current, 10 + 5000 % 1000);
    EXPECT_EQ(r.overflowed(), 4000u);
}

TEST(ppk2_reader, ends_on_a_failure_or_a_stop) {
    fake_port failing;
    failing.arrive(words(100));
    failing.break_down();
    reader broken(failing, identity);
    EXPECT_EQ(take_all(broken, 1000).size(), 100u);
    EXPECT_TRUE(broken.finished());
    EXPECT_EQ(broken.failure(), "the port 'fake' is gone");

    // Only the interrupt can end this read.
    fake_port quiet;
    reader waiting(quiet, identity, {1000, 4096, 3'600'000});
    waiting.stop();
    std::vector<device_sample> none;
    EXPECT_EQ(waiting.take(none, 10, 3600s), 0u);
    EXPECT_TRUE(waiting.finished());
    EXPECT_EQ(waiting.failure(), "");
}

}  // namespace
