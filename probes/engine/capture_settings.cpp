#include "engine/capture_settings.h"

#include "common/board_file.h"
#include "common/native_file.h"
#include "common/text_input.h"

namespace standin::sim {

std::optional<board_model> read_session_board(const std::string& config, std::string_view device,
                                              std::string& error) {
    if (config.empty()) {
        error = "no board configuration file; connect with --config <file>";
        return std::nullopt;
    }
    std::optional<board_model> board;
    try {
        board = read_board_file(config);
    } catch (const input_error& e) {
        error = e.what();
        return std::nullopt;
    }
    if (device != default_device_name && device != probe_name) {
        error = "unknown device '" + std::string(device) + "'; the probe simulator answers to '" +
                std::string(default_device_name) + "' and '" + std::string(probe_name) + "'";
        return std::nullopt;
    }
    return board;
}

namespace {

bool same_file(const std::string& a, const std::string& b) {
    file_identity first;
    file_identity second;
    return identity_of(a, first) && identity_of(b, second) && first == second;
}

}  // namespace

std::optional<capture_settings> check_capture_options(const wattscope_options& options,
                                                      std::string& error) {
    using VX_UTL::text_of;
    const std::string config(text_of(options.config));
    const std::string output(text_of(options.output));
    const std::string trace_mode(text_of(options.trace_mode));
    const std::string format(text_of(options.format));
    const std::string range_name(text_of(options.range));
    capture_settings settings;
    std::optional<board_model> board = read_session_board(config, text_of(options.device), error);
    if (!board) {
        return std::nullopt;
    }
    settings.board = std::move(*board);
    settings.config = config;
    if (trace_mode != "ws" && trace_mode != "ws+") {
        error = "unknown trace mode '" + trace_mode + "'; use ws or ws+";
        return std::nullopt;
    }
    settings.trace_plus = trace_mode == "ws+";
    if (format != "csv" && format != "gnuplot") {
        error = "unknown format '" + format + "'; use csv or gnuplot";
        return std::nullopt;
    }
    settings.gnuplot = format == "gnuplot";
    const probe_range* range = find_range(range_name);
    if (range == nullptr) {
        error = "unknown range '" + range_name + "'; use lo or hi";
        return std::nullopt;
    }
    settings.range = *range;
    settings.window_ms = range->window_s * 1000;
    if (options.sampfreq <= 0 || options.sampfreq > max_sample_rate) {
        error = "sample rate " + std::to_string(options.sampfreq) + " is out of range; use 1 to " +
                std::to_string(max_sample_rate) + " samples per second";
        return std::nullopt;
    }
    settings.rate = options.sampfreq;
    if (options.maxoutsize <= 0) {
        error = "maximum output size " + std::to_string(options.maxoutsize) +
                " is out of range; give a size in MiB above 0";
        return std::nullopt;
    }
    settings.max_bytes = int64_t{options.maxoutsize} * 1024 * 1024;
    settings.duration_ms = options.duration > 0 ? options.duration : 0;
    settings.trigger = options.trig != 0;
    if (settings.trigger && !settings.board.trigger_delay_us) {
        error = "--trig waits for the hardware trigger, and " + config +
                " wires none (no trigger_delay_us)";
        return std::nullopt;
    }
    settings.save_all = options.saveall != 0;
    if (same_file(output, config)) {
        error = "the output file '" + output + "' is the board configuration";
        return std::nullopt;
    }
    settings.output = output;
    return settings;
}

}  // namespace standin::sim
