#pragma once

// The emulated PPK2 itself, without a clock or a port: it takes the host's
// bytes, keeps the device's state, and makes the stream's words when told how
// many samples are due. The serving loop owns it and is its only thread.

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "common/board.h"
#include "emulator_calibration.h"
#include "emulator_commands.h"
#include "emulator_figures.h"
#include "emulator_options.h"
#include "sim/target_model.h"

namespace ppk2_emulator {

inline constexpr int64_t samples_per_second = 100'000;

// One stream word: ADC bits 0-13, range 14-16, counter 18-23, logic 24-31.
constexpr uint32_t make_word(uint32_t adc, int range, uint32_t counter, uint8_t logic) {
    return (adc & adc_max) | static_cast<uint32_t>(range) << 14 | (counter & 63) << 18 |
           static_cast<uint32_t>(logic) << 24;
}

class device {
  public:
    device(const options& opts, const standin::board_model& board);

    // Bytes from the host, in any pieces.
    void receive(std::span<const uint8_t> bytes);

    // Makes the samples up to `due` (counted from the stream's start). Returns
    // the length of a stall that begins first, in ms; the samples stop there.
    std::optional<int64_t> produce_until(uint64_t due);
    // Samples up to `due` that can't be sent (the host reads too slowly).
    void lose_until(uint64_t due);

    bool streaming() const { return streaming_; }
    uint64_t position() const { return position_; }

    // Bytes waiting to go to the host.
    std::string_view pending() const { return std::string_view(out_).substr(sent_); }
    void consume(size_t count);

    const stream_figures& figures() const { return figures_; }
    uint64_t streams() const { return streams_; }

    // Called on the serving thread as things happen.
    std::function<void(const std::string&)> on_command;  // The command-log line.
    std::function<void()> on_stream_start;
    std::function<void()> on_stream_end;
    std::function<void(std::string_view)> on_stream_bytes;  // As sent, for --record.

  private:
    void execute(const command& c);
    void start_stream();
    void end_stream();
    void power_on_state();
    uint8_t logic_at(uint64_t sample) const;
    double energy_volts() const;
    void append_word(uint32_t word, size_t skip_bytes);

    const options& opts_;
    const standin::board_model& board_;
    calibration cal_;
    command_parser parser_;
    standin::sim::target_model model_;
    std::vector<int64_t> logic_ends_;  // Cumulative ends of the schedule's steps, us.

    int mode_ = 1;
    uint32_t regulator_mv_ = 3700;
    bool powered_ = false;
    bool streaming_ = false;
    bool metadata_sent_ = false;

    uint64_t position_ = 0;  // Samples since the stream's start, lost ones too.
    uint32_t counter_ = 0;
    range_smoothing smoothing_;
    struct encoded {
        bool valid = false;
        double amperes = 0;
        double volts = 0;
        int range = 0;
        uint32_t adc = 0;
        double decoded = 0;
    } last_;
    stream_figures figures_;
    uint64_t streams_ = 0;
    std::vector<bool> lose_done_, slip_done_, stall_done_;

    std::string out_;
    size_t sent_ = 0;
};

}  // namespace ppk2_emulator
