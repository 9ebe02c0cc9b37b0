#include "engine/capture_settings.h"

#include "common/board_file.h"
#include "common/native_file.h"
#include "common/text_input.h"

namespace standin::sim {

std::optional<board_model> read_session_board(const std::string& config, std::string& error) {
    if (config.empty()) {
        error = "no board configuration file; connect with --config <file>";
        return std::nullopt;
    }
    try {
        return read_board_file(config);
    } catch (const input_error& e) {
        error = e.what();
    }
    return std::nullopt;
}

namespace {

bool same_file(const std::string& a, const std::string& b) {
    file_identity first;
    file_identity second;
    return identity_of(a, first) && identity_of(b, second) && first == second;
}

}  // namespace

std::optional<capture_settings> check_capture_settings(const wattscope_options& options,
                                                       board_model board, const probe_traits& probe,
                                                       std::string& error) {
    using VX_UTL::text_of;
    const std::string config(text_of(options.config));
    const std::string output(text_of(options.output));
    const std::string trace_mode(text_of(options.trace_mode));
    const std::string format(text_of(options.format));
    const std::string range_name(text_of(options.range));
    capture_settings settings;
    settings.board = std::move(board);
    settings.config = config;
    settings.device = text_of(options.device);
    if (trace_mode != "ws" && trace_mode != "ws+") {
        error = "unknown trace mode '" + trace_mode + "'; use ws or ws+";
        return std::nullopt;
    }
    settings.trace_plus = trace_mode == "ws+";
    if (settings.trace_plus && !probe.program_counters) {
        if (!probe.logic_marks) {
            error = "trace mode ws+ needs program counters, which " + std::string(probe.name) +
                    " does not sample; use ws";
            return std::nullopt;
        }
        if (settings.board.markers.empty()) {
            error = "trace mode ws+ on " + std::string(probe.name) +
                    " needs the firmware's marks: add 'marker <code> <name>' lines to " + config +
                    ", or use ws";
            return std::nullopt;
        }
    }
    if (format != "csv" && format != "gnuplot") {
        error = "unknown format '" + format + "'; use csv or gnuplot";
        return std::nullopt;
    }
    settings.gnuplot = format == "gnuplot";
    const probe_traits::range_window* range = nullptr;
    for (const probe_traits::range_window& known : probe.ranges) {
        range = known.range == range_name ? &known : range;
    }
    if (range == nullptr) {
        error = "unknown range '" + range_name + "'; use lo or hi";
        return std::nullopt;
    }
    settings.range = range_name;
    settings.window_ms = range->window_s * 1000;
    if (options.sampfreq <= 0 || options.sampfreq > probe.max_rate) {
        error = "sample rate " + std::to_string(options.sampfreq) + " is out of range; use 1 to " +
                std::to_string(probe.max_rate) + " samples per second";
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
    const bool wired = probe.trigger_on_input ? settings.board.trigger_input.has_value()
                                              : settings.board.trigger_delay_us.has_value();
    if (settings.trigger && !wired) {
        error = "--trig waits for the hardware trigger, and " + config + " wires none (no " +
                (probe.trigger_on_input ? "trigger_input" : "trigger_delay_us") + ")";
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
