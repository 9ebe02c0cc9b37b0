// A session and a reader against a scripted PPK2 on a fake port: what the
// emulator can't do (stale replies, failing writes, a full ring, a port that
// breaks or stays silent while a read waits).

#include <gtest/gtest.h>

#include <condition_variable>
#include <functional>
#include <thread>

#include "ppk2/reader.h"
#include "ppk2/session.h"

namespace {

using namespace probes::ppk2;
using namespace std::chrono_literals;

// Answers each GetMetadata with the next of `replies`; reads fail once
// `broken` and all is read, and the next `failing_writes` writes fail.
struct fake_port : probes::byte_port {
    explicit fake_port(std::vector<std::string> r = {}) : replies(r) {}

    std::ptrdiff_t read(void* into, size_t size, int timeout_ms) override {
        std::unique_lock<std::mutex> lock(mutex);
        changed.wait_for(lock, std::chrono::milliseconds(timeout_ms),
                         [this] { return interrupted || broken || !incoming.empty(); });
        if (interrupted || incoming.empty()) {
            return interrupted || !broken ? 0 : -1;
        }
        const size_t n = std::min(size, incoming.size());
        incoming.copy(static_cast<char*>(into), n);
        incoming.erase(0, n);
        return static_cast<std::ptrdiff_t>(n);
    }
    bool write(const void* data, size_t size) override {
        std::lock_guard<std::mutex> lock(mutex);
        const auto* b = static_cast<const uint8_t*>(data);
        if (failing_writes > 0) {
            return !failing_writes--;
        }
        written.insert(written.end(), b, b + size);
        if (b[0] == 0x19 && asked < replies.size()) {
            incoming += replies[asked++];
        }
        return true;
    }
    void interrupt() override {
        change([this] { interrupted = true; });
    }
    std::string error() const override { return "the port 'fake' is gone"; }

    void change(const std::function<void()>& what) {
        std::lock_guard<std::mutex> lock(mutex);
        what();
        changed.notify_all();
    }

    std::mutex mutex;  // Guards everything: the test's thread and the reader's use it.
    std::condition_variable changed;
    std::vector<std::string> replies;
    size_t asked = 0;
    std::string incoming;
    std::vector<uint8_t> written;
    int failing_writes = 0;
    bool interrupted = false, broken = false;
};

const std::string good_reply = "Calibrated: 1\nR0: 1000\nVDD: 3000\nEND\n";
const std::string stale("\x0e\x40\x88\x5a\x0f\x40\x8c\x5a", 8);
const std::string gone = "the port 'fake' is gone";

TEST(ppk2_session, commands_in_order) {
    const struct {
        const char* name;
        std::vector<std::string> replies;
        std::function<bool(session&, fake_port&)> use;
        std::vector<uint8_t> written;  // The session's destructor included.
        std::string error;             // Empty when `use` succeeds.
    } rows[] = {
        {"ampere mode leaves the path closed",
         {good_reply},
         [](session& s, fake_port&) {
             // The conversion takes the regulator's setting that the device reports.
             return s.open() && s.power_through() && s.regulator_volts() == 3.0 && s.start();
         },
         {0x07, 0x19, 0x11, 1, 0x0c, 1, 0x06, 0x07},
         ""},
        {"stale bytes, then a clean reply",
         {stale + good_reply, good_reply},
         [](session& s, fake_port&) { return s.open(); },
         {0x07, 0x19, 0x07, 0x19},
         ""},
        {"stale bytes every time",
         {stale, stale + "END\n", stale},
         [](session& s, fake_port&) { return s.open(); },
         {0x07, 0x19, 0x07, 0x19, 0x07, 0x19, 0x07},
         "no readable metadata from the device in 3 tries: its data does not stop, or it is not a "
         "PPK2"},
        {"a failed start still ends with the target off",
         {good_reply},
         [](session& s, fake_port& p) {
             const bool ok = s.open() && s.power_source(1800) && s.regulator_volts() == 1.8;
             p.failing_writes = 1;
             return ok && s.start();
         },
         {0x07, 0x19, 0x11, 2, 0x0d, 0x07, 0x08, 0x0c, 1, 0x07, 0x0c, 0},
         gone},
        {"a failed stop",
         {good_reply},
         [](session& s, fake_port& p) {
             const bool ok = s.open() && s.power_source(1800) && s.start();
             p.failing_writes = 2;
             return ok && s.stop();
         },
         {0x07, 0x19, 0x11, 2, 0x0d, 0x07, 0x08, 0x0c, 1, 0x06},
         gone},
    };
    for (const auto& row : rows) {
        fake_port port(row.replies);
        {
            session s(port, {200, 1, 200, 3});
            EXPECT_EQ(row.use(s, port), row.error.empty()) << row.name;
            EXPECT_EQ(s.error(), row.error) << row.name;
        }
        EXPECT_EQ(port.written, row.written) << row.name;
    }
}

// `count` words counting from `first`, ADC 10 + i % 1000.
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

TEST(ppk2_reader, a_slow_consumer_loses_counted_samples) {
    fake_port port;
    port.incoming = words(2000) + words(2995, 2005);  // 5 lost where the ring is full
    reader r(port, identity, {1000, 4096, 500});
    while (r.totals().samples < 4995) {
        std::this_thread::sleep_for(1ms);
    }
    EXPECT_EQ(take_all(r, 1000).size(), 1000u);
    port.change([&] { port.incoming = words(10, 5000); });
    const auto after = take_all(r, 10);
    ASSERT_EQ(after.size(), 10u);
    EXPECT_EQ(after[0].lost_before, 4000u);
    EXPECT_EQ(after[0].current, 10);  // sample 5000
    EXPECT_EQ(r.overflowed(), 3995u);
}

TEST(ppk2_reader, ends_on_a_failure_or_a_stop) {
    fake_port failing;
    failing.incoming = words(100), failing.broken = true;
    reader broken(failing, identity);
    EXPECT_EQ(take_all(broken, 1000).size(), 100u);
    EXPECT_TRUE(broken.finished());
    EXPECT_EQ(broken.failure(), gone);

    fake_port quiet;  // Only the interrupt can end this read.
    reader waiting(quiet, identity, {1000, 4096, 3'600'000});
    waiting.stop();
    std::vector<device_sample> none;
    EXPECT_EQ(waiting.take(none, 10, 3600s), 0u);
    EXPECT_TRUE(waiting.finished());
    EXPECT_EQ(waiting.failure(), "");
}

}  // namespace
