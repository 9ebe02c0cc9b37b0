#include "emulator_options.h"

#include <charconv>
#include <string_view>

namespace ppk2_emulator {

const char* const help_text =
    R"(Usage: ppk2-emulator --board FILE [options]

Emulates a Power Profiler Kit II on a pseudo-terminal: prints the terminal's
path on one line, then serves the PPK2's serial protocol on it until SIGTERM
or SIGINT. The stream carries the board's modelled current, 100000 samples a
second in real time.

  --board FILE          board file whose modelled current the target draws
  --link PATH           also make PATH a symbolic link to the terminal
  --fd N                serve on the inherited pseudo-terminal master N
  --command-log FILE    each command received, a line each: metadata,
                        mode N, regulator MV, power N, start, stop,
                        filter on|off, reset, unknown 0xNN
  --report FILE         the stream's own figures, rewritten at every stop and
                        at exit (see below)
  --report-samples N    the figures of the stream's first N samples only
                        (lost ones included), as a capture of N samples sees
  --record FILE         every stream byte sent, as sent
  --logic SCHEDULE      logic inputs D0-D7: CODE:US[,CODE:US...], each code
                        (0-255, 0x.. for hex) held for US microseconds, the
                        list repeating from the stream's start
  --rise DN@MS          input N rises MS ms after the stream starts and
                        stays high (over the schedule)
  --lose N@MS           lose N samples MS ms into the stream: the counter
                        jumps (repeatable)
  --slip MS             send one word a byte short MS ms into the stream
                        (repeatable)
  --stall T@MS          send nothing for T ms from MS ms into the stream,
                        then catch up (repeatable)
  --stale BYTES         send BYTES bytes of an old stream before the first
                        metadata reply
  --backlog S           hold up to S seconds of stream the host hasn't read
                        (default 10); beyond it samples are lost and count
                        as lost, as on a device whose buffers overflow
  --uncalibrated        report no calibration (-nan values, R 0)
  --help                this text

Faults happen once each, in the first stream that lasts long enough.
Auto-ranging: range 0 below 400 uA, 1 below 4 mA, 2 below 40 mA, 3 below
400 mA, 4 above. The target draws its current in ampere mode, and in source
mode while powered. Power-on state: ampere mode, regulator 3700 mV, target
off; reset (0x20) returns to it and stops the stream, but the terminal stays
(a device would leave the bus). RegulatorSet outside 800-5000 mV is ignored.
Each sample is the model's exact mean current over its 10 us, without noise,
encoded to the nearest ADC value with the regulator's voltage as V (in both
modes, as hosts decode). Words queued before a stop still follow it.

Report lines (key value): streams, words_sent, samples_lost, words_slipped,
samples_decoded, seconds, voltage_v, mean_current_a, peak_current_a,
charge_c, energy_j, then for each logic byte C that the decoded samples
carried, in ascending order, code.C.samples and code.C.sum_a (the sum of
their currents in A; the byte as sent, an input of --rise included). The
figures are of the last stream: its words decoded with the device's
calibration and smoothed after range changes as the reference clients do
(a slipped word left out); energy at voltage_v, the regulator's voltage in
source mode and the board's supply in ampere mode. Sums are printed with 17
significant digits, added in the order the samples were sent.
)";

namespace {

int64_t number(std::string_view text, std::string_view option, int64_t max) {
    int base = 10;
    if (text.starts_with("0x")) {
        text.remove_prefix(2);
        base = 16;
    }
    int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (text.empty() || error != std::errc() || end != text.data() + text.size() || value < 0 ||
        value > max) {
        throw usage_error(std::string(option) + ": bad number '" + std::string(text) + "'");
    }
    return value;
}

constexpr int64_t max_ms = 1'000'000'000;

// "A@B" into its two numbers.
std::pair<int64_t, int64_t> pair_at(std::string_view text, std::string_view option, int64_t max) {
    const size_t at = text.find('@');
    if (at == std::string_view::npos) {
        throw usage_error(std::string(option) + ": expected N@MS, got '" + std::string(text) + "'");
    }
    return {number(text.substr(0, at), option, max), number(text.substr(at + 1), option, max_ms)};
}

std::vector<logic_step> parse_schedule(std::string_view text) {
    std::vector<logic_step> steps;
    while (!text.empty()) {
        const size_t comma = text.find(',');
        const std::string_view step = text.substr(0, comma);
        const size_t colon = step.find(':');
        if (colon == std::string_view::npos) {
            throw usage_error("--logic: expected CODE:US, got '" + std::string(step) + "'");
        }
        steps.push_back({static_cast<uint8_t>(number(step.substr(0, colon), "--logic", 255)),
                         number(step.substr(colon + 1), "--logic", max_ms * 1000)});
        text = comma == std::string_view::npos ? std::string_view() : text.substr(comma + 1);
    }
    int64_t total = 0;
    for (const logic_step& s : steps) {
        total += s.us;
    }
    if (steps.empty() || total == 0) {
        throw usage_error("--logic: the schedule takes no time");
    }
    return steps;
}

}  // namespace

options parse_options(const std::vector<std::string>& args) {
    options o;
    for (size_t k = 0; k < args.size(); ++k) {
        const std::string& name = args[k];
        if (name == "--help") {
            o.help = true;
            continue;
        }
        if (name == "--uncalibrated") {
            o.uncalibrated = true;
            continue;
        }
        if (k + 1 == args.size()) {
            throw usage_error(name.starts_with("--") ? name + ": needs a value"
                                                     : "unexpected argument '" + name + "'");
        }
        const std::string& value = args[++k];
        if (name == "--board") {
            o.board = value;
        } else if (name == "--link") {
            o.link = value;
        } else if (name == "--fd") {
            o.fd = static_cast<int>(number(value, name, 1 << 20));
        } else if (name == "--report") {
            o.report = value;
        } else if (name == "--command-log") {
            o.command_log = value;
        } else if (name == "--report-samples") {
            o.report_samples = static_cast<uint64_t>(number(value, name, INT64_MAX));
        } else if (name == "--record") {
            o.record = value;
        } else if (name == "--logic") {
            o.logic = parse_schedule(value);
        } else if (name == "--rise") {
            if (!value.starts_with("D") || value.size() < 2) {
                throw usage_error("--rise: expected DN@MS, got '" + value + "'");
            }
            const auto [input, at] = pair_at(std::string_view(value).substr(1), name, 7);
            o.rise_input = static_cast<int>(input);
            o.rise_at_ms = at;
        } else if (name == "--lose") {
            const auto [samples, at] = pair_at(value, name, int64_t{1} << 40);
            o.lose.push_back({static_cast<uint64_t>(samples), at});
        } else if (name == "--slip") {
            o.slip_at_ms.push_back(number(value, name, max_ms));
        } else if (name == "--stall") {
            const auto [ms, at] = pair_at(value, name, 3'600'000);
            o.stall.push_back({ms, at});
        } else if (name == "--backlog") {
            o.backlog_s = number(value, name, 3600);
        } else if (name == "--stale") {
            o.stale_bytes = static_cast<uint64_t>(number(value, name, 1 << 24));
        } else {
            throw usage_error("unknown option '" + name + "'");
        }
    }
    if (!o.help && o.board.empty()) {
        throw usage_error("--board FILE is needed");
    }
    return o;
}

}  // namespace ppk2_emulator
