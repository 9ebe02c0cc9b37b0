// The PPK2 as a sample source: finds and opens its data port, reads its
// calibration, powers the target as the board says, and turns the device's
// 100 000 samples a second into the capture's periods.
//
// The port stays open from create to the source's end, locked for this
// process, so that a second use case naming the same PPK2 is refused at
// create and nothing else talks to the device meanwhile.

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "engine/engineering.h"
#include "engine/function_marks.h"
#include "ppk2/averager.h"
#include "ppk2/protocol.h"
#include "ppk2/reader.h"
#include "ppk2/session.h"
#include "serial/serial_port.h"
#include "serial/usb_discovery.h"
#include "sources.h"

namespace standin::sim {

namespace {

namespace ppk2 = probes::ppk2;

// A PPK2 measures up to 1 A; its highest range's top is where clipping sets in.
constexpr int64_t ppk2_full_scale_na = 1'000'000'000;
// How often the engine looks for periods: often enough that the reader's
// ring never comes near full, seldom enough to cost nothing.
constexpr auto poll_period = std::chrono::milliseconds(20);
constexpr size_t samples_per_take = size_t{1} << 16;

class ppk2_source final : public sample_source {
  public:
    ppk2_source(std::unique_ptr<probes::byte_port> port, std::unique_ptr<ppk2::session> session,
                std::string port_name, source_request request)
        : port_(std::move(port)),
          session_(std::move(session)),
          name_("the PPK2 at " + port_name),
          request_(std::move(request)),
          voltage_uv_(request_.board.powered_by_probe
                          ? (request_.board.supply_uv + 500) / 1000 * 1000
                          : request_.board.supply_uv),
          marked_(!request_.board.markers.empty()),
          markers_(map_markers(request_.board)) {}

    ~ppk2_source() override { finish(); }

    std::string_view name() const override { return name_; }

    std::string describe(std::string_view trace_mode) const override {
        std::string text = "# PPK2 capture of " + request_.board.target + " (" +
                           request_.config_name + ")\n# " + std::to_string(request_.rate) +
                           " samples/s";
        if (averages()) {
            text += ", averaged from " + std::to_string(ppk2::device_rate) + " samples/s";
        }
        text += ", auto range, trace mode " + std::string(trace_mode) +
                "\n# voltage_V is not measured: " +
                (request_.board.powered_by_probe ? "the regulator's setting"
                                                 : "the board's nominal supply") +
                "\n";
        return text;
    }

    bool averages() const override { return request_.rate < ppk2::device_rate; }
    bool measures_voltage() const override { return false; }

    size_hint largest_periods() const override {
        period_sample most;
        most.current_na = most.min_na = most.max_na = ppk2_full_scale_na;
        most.voltage_uv = voltage_uv_;
        most.power_nw = power_nw(ppk2_full_scale_na, voltage_uv_);
        most.clipped = true;
        // An offset can make a small current read below zero: a minus sign
        // on the current, its least and most, and the power.
        return {{most}, 4};
    }

    void start(clock::time_point now) override {
        last_poll_ = now;
        const bool powered = request_.board.powered_by_probe
                                 ? session_->power_source(static_cast<int32_t>(voltage_uv_ / 1000))
                                 : session_->power_through();
        if (!powered || !session_->start()) {
            fail(session_->error());
            return;
        }
        reader_ = std::make_unique<ppk2::reader>(
            *port_, ppk2::converter(session_->info().cal, session_->regulator_volts()));
        std::optional<int> trigger_input;
        if (request_.trigger && request_.board.trigger_input) {
            trigger_input = static_cast<int>(*request_.board.trigger_input);
        }
        averager_.emplace(request_.rate, trigger_input);
        samples_.reserve(samples_per_take);
    }

    ready_periods poll(clock::time_point now) override {
        last_poll_ = now;
        if (!reader_) {
            return {};
        }
        if (head_ == periods_.size()) {
            periods_.clear();
            logic_shares_.clear();
            head_ = 0;
            share_head_ = 0;
            // Everything the reader has now; one poll takes at most a few
            // hundred ms of the stream.
            for (int block = 0; block < 8; ++block) {
                samples_.clear();
                if (reader_->take(samples_, samples_per_take, std::chrono::milliseconds(0)) == 0) {
                    break;
                }
                averager_->add(samples_, periods_, logic_shares_);
            }
            if (head_ == periods_.size() && reader_->finished() && failure_.empty()) {
                const std::string why = reader_->failure();
                if (!why.empty()) {
                    fail(why);
                }
            }
        }
        ready_periods got;
        if (head_ == periods_.size()) {
            return got;
        }
        const uint64_t first = periods_[head_].index;
        got.lost = first - handed_;
        handed_ = first;
        size_t run = head_;
        while (run < periods_.size() && periods_[run].index == first + (run - head_)) {
            ++run;
        }
        got.ready = run - head_;
        return got;
    }

    void take(period_sample* into, size_t count) override {
        const bool averaged = averages();
        shares_.clear();
        for (size_t i = 0; i < count; ++i) {
            const ppk2::period& p = periods_[head_++];
            period_sample& s = into[i];
            s = period_sample{};
            s.current_na = std::llround(p.mean * 1e9);
            if (averaged) {
                s.min_na = std::llround(p.min * 1e9);
                s.max_na = std::llround(p.max * 1e9);
            }
            s.voltage_uv = voltage_uv_;
            s.power_nw = power_nw(s.current_na, voltage_uv_);
            s.clipped = p.clipped;
            lost_samples_ += p.lost;
            if (marked_) {
                split_by_marks(p, s);
            }
            share_head_ += p.shares;
        }
        handed_ += count;
    }

    std::span<const period_share> shares() const override { return shares_; }
    bool samples_program_counters() const override { return false; }

    clock::time_point next_ready_at() const override { return last_poll_ + poll_period; }
    const std::string& failure() const override { return failure_; }
    clip_advice clipping() const override { return {ppk2_full_scale_na, {}}; }
    std::optional<uint64_t> lost_device_samples() const override { return lost_samples_; }

    void finish() override {
        if (reader_) {
            reader_->stop();
            reader_.reset();
        }
        if (session_) {
            session_->stop();
            session_.reset();
        }
        port_.reset();
    }

  private:
    void fail(const std::string& why) { failure_ = "the PPK2 stopped answering: " + why; }

    // The period's device samples by what their codes name; the row names
    // what held longest, the first of equals.
    void split_by_marks(const ppk2::period& p, period_sample& s) {
        const size_t first = shares_.size();
        for (uint32_t i = 0; i < p.shares; ++i) {
            const ppk2::logic_share& run = logic_shares_[share_head_ + i];
            const uint8_t code = run.logic & markers_.code_inputs;
            const uint32_t function = markers_.function[code];
            auto share =
                std::find_if(shares_.begin() + static_cast<ptrdiff_t>(first), shares_.end(),
                             [&](const period_share& o) { return o.function == function; });
            if (share == shares_.end()) {
                shares_.push_back({function, markers_.mark[code], 0, 0, 0, 0});
                share = shares_.end() - 1;
            }
            const double charge_nc = run.sum * 1e9 / ppk2::device_rate;
            share->samples += run.samples;
            share->seconds += static_cast<double>(run.samples) / ppk2::device_rate;
            share->charge_nc += charge_nc;
            share->energy_nj += charge_nc * static_cast<double>(voltage_uv_) * 1e-6;
        }
        const period_share* longest = nullptr;
        for (size_t i = first; i < shares_.size(); ++i) {
            if (longest == nullptr || shares_[i].samples > longest->samples) {
                longest = &shares_[i];
            }
        }
        if (longest != nullptr) {
            s.function = longest->function;
            s.mark = longest->mark;
        }
        s.shares = static_cast<uint32_t>(shares_.size() - first);
    }

    std::unique_ptr<probes::byte_port> port_;
    std::unique_ptr<ppk2::session> session_;  // Over *port_; both the use case thread's.
    const std::string name_;
    const source_request request_;
    const int64_t voltage_uv_;  // What the voltage column holds: not measured.
    const bool marked_;         // The board maps the firmware's marks.
    const marker_map markers_;
    std::unique_ptr<ppk2::reader> reader_;  // Its own thread reads *port_.
    std::optional<ppk2::averager> averager_;
    std::vector<ppk2::device_sample> samples_;
    std::vector<ppk2::period> periods_;  // Made and not yet handed over, from head_.
    size_t head_ = 0;
    std::vector<ppk2::logic_share> logic_shares_;  // Of periods_, from share_head_.
    size_t share_head_ = 0;
    std::vector<period_share> shares_;  // Of the periods of the last take().
    uint64_t handed_ = 0;               // Periods lost or taken.
    uint64_t lost_samples_ = 0;         // Device samples lost up to the last period taken.
    clock::time_point last_poll_{};
    std::string failure_;
};

// Opens `path` and reads the PPK2's metadata there; null with `error`.
std::unique_ptr<sample_source> open_ppk2(const std::string& path, const source_request& request,
                                         std::string& error) {
    std::unique_ptr<probes::byte_port> port = probes::open_serial_port(path, error);
    if (!port) {
        return nullptr;
    }
    auto session = std::make_unique<ppk2::session>(*port);
    if (!session->open()) {
        error = "no PPK2 answers at '" + path + "': " + session->error();
        return nullptr;
    }
    return std::make_unique<ppk2_source>(std::move(port), std::move(session), path, request);
}

}  // namespace

std::unique_ptr<sample_source> make_ppk2_source(const std::string& port,
                                                const source_request& request, std::string& error) {
    if (!port.empty()) {
        return open_ppk2(port, request, error);
    }
    std::string problem;
    const std::vector<probes::usb_serial_port> found =
        probes::find_usb_serial_ports(ppk2::usb_vendor_id, ppk2::usb_product_id, problem);
    if (!problem.empty()) {
        error = "can't look for a PPK2: " + problem;
        return nullptr;
    }
    if (found.empty()) {
        error = "no PPK2 found; attach one, or name its port with --device ppk2:PORT";
        return nullptr;
    }
    // Ports of one device stand together; a device shows a data port and,
    // with recent firmware, a debug shell.
    std::vector<std::string> devices;
    for (const probes::usb_serial_port& p : found) {
        const std::string who = p.serial_number.empty() ? p.path : p.serial_number;
        if (devices.empty() || devices.back() != who) {
            devices.push_back(who);
        }
    }
    if (devices.size() > 1) {
        error = "several PPK2s found (";
        for (size_t i = 0; i < found.size(); ++i) {
            error += (i == 0 ? "" : ", ") + found[i].path;
            if (!found[i].serial_number.empty()) {
                error += " of " + found[i].serial_number;
            }
        }
        error += "); pick one with --device ppk2:PORT";
        return nullptr;
    }
    // The data port is the one that answers the metadata request.
    std::string first_error;
    for (const probes::usb_serial_port& p : found) {
        std::string attempt;
        if (std::unique_ptr<sample_source> source = open_ppk2(p.path, request, attempt)) {
            return source;
        }
        if (first_error.empty()) {
            first_error = attempt;
        }
    }
    error = first_error;
    return nullptr;
}

}  // namespace standin::sim
