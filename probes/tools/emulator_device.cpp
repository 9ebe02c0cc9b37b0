#include "emulator_device.h"

#include <algorithm>

namespace ppk2_emulator {

namespace {

uint64_t sample_at_ms(int64_t ms) {
    return static_cast<uint64_t>(ms) * samples_per_second / 1000;
}

}  // namespace

device::device(const options& opts, const standin::board_model& board)
    : opts_(opts),
      board_(board),
      cal_(opts.uncalibrated ? calibration::defaults() : calibration::typical()),
      model_(board, samples_per_second),
      lose_done_(opts.lose.size()),
      slip_done_(opts.slip_at_ms.size()),
      stall_done_(opts.stall.size()) {
    int64_t end = 0;
    for (const logic_step& step : opts.logic) {
        end += step.us;
        logic_ends_.push_back(end);
    }
}

void device::receive(std::span<const uint8_t> bytes) {
    for (const command& c : parser_.feed(bytes)) {
        if (on_command) {
            on_command(describe(c));
        }
        execute(c);
    }
}

void device::execute(const command& c) {
    if (!c.known) {
        return;
    }
    switch (static_cast<opcode>(c.code)) {
        case opcode::get_metadata:
            if (!metadata_sent_) {
                metadata_sent_ = true;
                // An old stream's tail, starting mid-word as a real one would.
                uint32_t counter = 17;
                for (uint64_t n = 0; n < opts_.stale_bytes; ++counter) {
                    const uint32_t word = make_word(1234 + counter % 7, 1, counter, 0);
                    for (int b = counter == 17 ? 1 : 0; b < 4 && n < opts_.stale_bytes; ++b, ++n) {
                        out_.push_back(static_cast<char>(word >> (8 * b)));
                    }
                }
            }
            out_ += metadata_text(cal_, regulator_mv_, mode_);
            break;
        case opcode::set_power_mode:
            if (c.argument == 1 || c.argument == 2) {
                mode_ = static_cast<int>(c.argument);
                figures_.volts = energy_volts();
            }
            break;
        case opcode::regulator_set:
            if (c.argument >= 800 && c.argument <= 5000) {
                regulator_mv_ = c.argument;
                figures_.volts = energy_volts();
            }
            break;
        case opcode::device_running_set:
            if (c.argument == 1 && !powered_) {
                // The target boots: its cycle starts over.
                model_ = standin::sim::target_model(board_, samples_per_second);
            }
            powered_ = c.argument == 1;
            break;
        case opcode::average_start:
            if (!streaming_) {
                start_stream();
            }
            break;
        case opcode::average_stop:
            if (streaming_) {
                end_stream();
            }
            break;
        case opcode::reset:
            if (streaming_) {
                end_stream();
            }
            power_on_state();
            break;
        case opcode::spike_filter_on:
        case opcode::spike_filter_off:
            // The device's own filter acts before the ADC; the model has no spikes.
            break;
    }
}

void device::power_on_state() {
    mode_ = 1;
    regulator_mv_ = 3700;
    powered_ = false;
}

double device::energy_volts() const {
    return mode_ == 2 ? regulator_mv_ / 1000.0 : static_cast<double>(board_.supply_uv) * 1e-6;
}

void device::start_stream() {
    streaming_ = true;
    ++streams_;
    position_ = 0;
    counter_ = 0;
    smoothing_ = {};
    figures_ = {};
    figures_.volts = energy_volts();
    model_ = standin::sim::target_model(board_, samples_per_second);
    if (on_stream_start) {
        on_stream_start();
    }
}

void device::end_stream() {
    streaming_ = false;
    if (on_stream_end) {
        on_stream_end();
    }
}

uint8_t device::logic_at(uint64_t sample) const {
    const int64_t us = static_cast<int64_t>(sample) * (1'000'000 / samples_per_second);
    uint8_t inputs = 0;
    if (!logic_ends_.empty()) {
        const int64_t within = us % logic_ends_.back();
        const auto step = std::upper_bound(logic_ends_.begin(), logic_ends_.end(), within);
        inputs = opts_.logic[static_cast<size_t>(step - logic_ends_.begin())].inputs;
    }
    if (opts_.rise_input) {
        const uint8_t bit = static_cast<uint8_t>(1u << *opts_.rise_input);
        inputs = us >= opts_.rise_at_ms * 1000 ? inputs | bit : inputs & ~bit;
    }
    return inputs;
}

void device::append_word(uint32_t word, size_t skip_bytes) {
    const size_t at = out_.size();
    for (size_t b = skip_bytes; b < 4; ++b) {
        out_.push_back(static_cast<char>(word >> (8 * b)));
    }
    if (on_stream_bytes) {
        on_stream_bytes(std::string_view(out_).substr(at));
    }
}

std::optional<int64_t> device::produce_until(uint64_t due) {
    const bool draws = mode_ == 1 || powered_;
    const double volts = regulator_mv_ / 1000.0;
    while (streaming_ && position_ < due) {
        for (size_t k = 0; k < opts_.stall.size(); ++k) {
            if (!stall_done_[k] && position_ >= sample_at_ms(opts_.stall[k].at_ms)) {
                stall_done_[k] = true;
                return opts_.stall[k].ms;
            }
        }
        bool lost = false;
        for (size_t k = 0; k < opts_.lose.size(); ++k) {
            if (!lose_done_[k] && position_ >= sample_at_ms(opts_.lose[k].at_ms)) {
                lose_done_[k] = true;
                const uint64_t n = opts_.lose[k].samples;
                model_.skip(n);
                position_ += n;
                counter_ += static_cast<uint32_t>(n % 64);
                figures_.lost += n;
                lost = true;
            }
        }
        if (lost) {
            continue;
        }
        size_t skip = 0;
        for (size_t k = 0; k < opts_.slip_at_ms.size(); ++k) {
            if (!slip_done_[k] && position_ >= sample_at_ms(opts_.slip_at_ms[k])) {
                slip_done_[k] = true;
                skip = 1;
            }
        }
        const double amperes = draws ? static_cast<double>(model_.next().mean_na) * 1e-9 : 0.0;
        if (!last_.valid || amperes != last_.amperes || volts != last_.volts) {
            // A mode draws one current for many samples: encode it once.
            const int range = range_for(amperes);
            const uint32_t adc = encode_current(cal_, range, amperes, volts);
            last_ = {true, amperes, volts, range, adc, decode_current(cal_, range, adc, volts)};
        }
        const uint8_t logic = logic_at(position_);
        append_word(make_word(last_.adc, last_.range, counter_, logic), skip);
        if (skip) {
            ++figures_.slipped;
        } else {
            ++figures_.words_sent;
            const double smoothed = smoothing_.next(last_.range, last_.decoded);
            if (position_ < opts_.report_samples) {
                figures_.add(smoothed, logic);
            }
        }
        ++counter_;
        ++position_;
    }
    return std::nullopt;
}

void device::lose_until(uint64_t due) {
    if (!streaming_ || due <= position_) {
        return;
    }
    const uint64_t n = due - position_;
    model_.skip(n);
    position_ = due;
    counter_ += static_cast<uint32_t>(n % 64);
    figures_.lost += n;
}

void device::consume(size_t count) {
    sent_ += count;
    if (sent_ == out_.size()) {
        out_.clear();
        sent_ = 0;
    } else if (sent_ > 65536 && sent_ * 2 > out_.size()) {
        out_.erase(0, sent_);
        sent_ = 0;
    }
}

}  // namespace ppk2_emulator
