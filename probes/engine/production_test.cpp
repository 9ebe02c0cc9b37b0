#include "engine/production_test.h"

#include <cmath>
#include <cstdio>

#include "common/atomic_file.h"
#include "common/native_file.h"
#include "common/text_input.h"
#include "engine/capture_settings.h"
#include "sim/front_end.h"
#include "engine/junit_report.h"
#include "engine/pacing.h"
#include "sim/target_model.h"

namespace standin::sim {

namespace {

constexpr auto tick = std::chrono::milliseconds(10);

std::string in_unit(double value, const test_limit& limit) {
    char text[48];
    std::snprintf(text, sizeof text, "%#.4g", value / limit.unit_scale);
    return text + std::string(" ") + limit.unit;
}

// For the report, which a CI system may compare: ten significant digits in
// the line's unit, without the unit.
std::string precise(double value, const test_limit& limit) {
    char text[48];
    std::snprintf(text, sizeof text, "%.10g", value / limit.unit_scale);
    return text;
}

// What the report would replace that it must not: null, or what that is.
// Its rename would replace a FIFO or a device such as /dev/null, even
// /dev/stdout's link, where a writer would wait or write into the device.
const char* report_clash(const std::string& report, const std::string& input,
                         const std::string& config) {
    file_kind kind = file_kind::other;
    const file_handle file = open_for_input(report, kind);
    if (file == no_file) {
        return nullptr;  // Not there yet; or the write will say why not.
    }
    file_identity target;
    const bool known = identity_of(file, target);
    close_file(file);
    if (kind != file_kind::regular && kind != file_kind::directory) {
        return "not a regular file";
    }
    file_identity other;
    if (known && identity_of(input, other) && other == target) {
        return "the test description";
    }
    if (known && identity_of(config, other) && other == target) {
        return "the board configuration";
    }
    return nullptr;
}

}  // namespace

double test_measurement::value_of(test_parameter parameter) const {
    switch (parameter) {
        case test_parameter::supply_voltage:
            return supply_voltage;
        case test_parameter::mean_current:
            return mean_current;
        case test_parameter::sleep_current:
            return sleep_current;
        case test_parameter::active_current:
            return active_current;
        case test_parameter::peak_current:
            return peak_current;
        case test_parameter::mean_power:
            return mean_power;
        case test_parameter::cycle_energy:
            break;
    }
    return cycle_energy;
}

uint64_t test_measurement::samples_of(test_parameter parameter) const {
    switch (parameter) {
        case test_parameter::sleep_current:
            return sleep_samples;
        case test_parameter::active_current:
            return samples - sleep_samples;
        default:
            return samples;
    }
}

uint64_t test_measurement::clipped_of(test_parameter parameter) const {
    switch (parameter) {
        case test_parameter::supply_voltage:
            return 0;  // The voltage follows the true current, not the reading.
        case test_parameter::sleep_current:
            return sleep_clipped;
        case test_parameter::active_current:
            return clipped - sleep_clipped;
        default:
            return clipped;
    }
}

std::unique_ptr<production_test> production_test::create(const prodtest_options& options,
                                                         std::string& error) {
    const std::string input(VX_UTL::text_of(options.input));
    const std::string config(VX_UTL::text_of(options.config));
    std::unique_ptr<production_test> made(new production_test());
    try {
        made->description_ = parse_test_description(read_whole_file(input), input);
    } catch (const input_error& e) {
        error = e.what();
        return nullptr;
    }
    std::optional<board_model> board =
        read_session_board(config, VX_UTL::text_of(options.device), error);
    if (!board) {
        return nullptr;
    }
    made->board_ = std::move(*board);
    made->input_ = input;
    made->config_ = config;
    made->report_ = report_path(input, made->description_.report);
    if (const char* clash = report_clash(made->report_, input, config)) {
        const int line = made->description_.report_line;
        error = (line == 0 ? "" : input + ":" + std::to_string(line) + ": ") +
                "the report " + made->report_ + " is " + clash;
        return nullptr;
    }
    return made;
}

bool production_test::measure() {
    const int32_t rate = description_.rate;
    const auto total = static_cast<uint64_t>(std::llround(description_.measure_s * rate));
    target_model model(board_, rate);
    front_end probe(board_, description_.range);

    // The firmware marks its lowest-current mode as sleep on a probe input.
    uint32_t sleep_mode = 0;
    for (uint32_t m = 0; m < board_.modes.size(); ++m) {
        if (board_.modes[m].current_na < board_.modes[sleep_mode].current_na) {
            sleep_mode = m;
        }
    }
    double voltage_sum = 0;
    double current_sum = 0;
    double power_sum = 0;
    double sleep_sum = 0;
    double active_sum = 0;
    uint64_t sleep_count = 0;
    int64_t peak = INT64_MIN;
    uint64_t done = 0;
    const clock::time_point start = clock::now();
    bool stopped = stop_.requested();
    while (done < total && !stopped) {
        stopped = stop_.requested();
        const uint64_t due = std::min(periods_in(clock::now() - start, rate), total);
        for (; done < due; ++done) {
            const target_model::interval interval = model.next();
            const reading r = probe.measure(interval.mean_na);
            const auto current = static_cast<double>(r.current_na);
            voltage_sum += static_cast<double>(r.voltage_uv);
            current_sum += current;
            power_sum += static_cast<double>(r.power_nw);
            peak = std::max(peak, r.current_na);
            if (r.clipped) {
                ++measured_.clipped;
                measured_.sleep_clipped += interval.mode == sleep_mode ? 1 : 0;
                measured_.clipped_peak_na = std::max(measured_.clipped_peak_na, interval.mean_na);
            }
            if (interval.mode == sleep_mode) {
                sleep_sum += current;
                ++sleep_count;
            } else {
                active_sum += current;
            }
        }
        taken_.store(done, std::memory_order_relaxed);
        if (done < total && !stopped) {
            stop_.sleep_until(
                std::max(clock::now() + tick, start + end_of_periods(done + 1, rate)));
        }
    }
    const double n = done == 0 ? 1.0 : static_cast<double>(done);
    const uint64_t active_count = done - sleep_count;
    measured_.samples = done;
    measured_.sleep_samples = sleep_count;
    measured_.seconds = static_cast<double>(done) / rate;
    measured_.supply_voltage = voltage_sum / n * 1e-6;
    measured_.mean_current = current_sum / n * 1e-9;
    measured_.sleep_current = sleep_count == 0 ? 0 : sleep_sum / sleep_count * 1e-9;
    measured_.active_current = active_count == 0 ? 0 : active_sum / active_count * 1e-9;
    measured_.peak_current = done == 0 ? 0 : static_cast<double>(peak) * 1e-9;
    measured_.mean_power = power_sum / n * 1e-9;
    measured_.cycle_energy = measured_.mean_power * static_cast<double>(board_.cycle_us()) * 1e-6;
    return done == total;
}

int production_test::run(std::ostream& out, std::ostream& errors) {
    const bool complete = measure();
    report_facts facts;
    facts.suite = base_name(input_);
    facts.target = board_.target;
    facts.board = base_name(config_);
    facts.seconds = measured_.seconds;
    size_t failed = 0;
    size_t unmeasured = 0;
    size_t clipped = 0;
    for (const test_limit& limit : description_.limits) {
        report_case result{limit.name, {}, {}, {}, {}};
        const double allowed =
            limit.relative ? std::fabs(limit.expected) * limit.tolerance : limit.tolerance;
        const std::string bounds = precise(limit.expected - allowed, limit) + " to " +
                                   precise(limit.expected + allowed, limit) + " " + limit.unit;
        result.properties = {{"unit", limit.unit},
                             {"expected", limit.expected_text},
                             {"tolerance", limit.tolerance_text},
                             {"lower_limit", precise(limit.expected - allowed, limit)},
                             {"upper_limit", precise(limit.expected + allowed, limit)}};
        if (!complete) {
            result.error = "stopped before the measurement ended";
            facts.cases.push_back(result);
            continue;
        }
        // A mean of no samples reads 0 and could pass; it is no measurement.
        const uint64_t samples = measured_.samples_of(limit.parameter);
        const uint64_t cut = measured_.clipped_of(limit.parameter);
        if (samples == 0 || cut > 0) {
            if (samples == 0) {
                ++unmeasured;
                result.error = "no sample of " + limit.name + " in the " +
                               description_.measure_text + " measured";
            } else {
                // Clipped readings make any figure of them wrong, a pass as much as a fail.
                ++clipped;
                const probe_range* larger =
                    range_holding(description_.range, measured_.clipped_peak_na);
                result.error =
                    limit.name + " clipped in " + std::to_string(cut) + " of " +
                    std::to_string(samples) + " samples beyond " +
                    current_text(description_.range.full_scale_na) +
                    (larger == nullptr ? " (no range holds them)"
                                       : " (range " + std::string(larger->name) +
                                             " holds them: add the line 'range " +
                                             std::string(larger->name) + "' to " + input_ + ")");
            }
            out << "prodtest: " << result.error << ": ERROR\n";
            facts.cases.push_back(result);
            continue;
        }
        const double value = measured_.value_of(limit.parameter);
        const bool pass = std::fabs(value - limit.expected) <= allowed;
        const std::string judged = in_unit(value, limit) + ", expected " + limit.expected_text +
                                   " " + limit.unit + " +/- " + limit.tolerance_text +
                                   (limit.relative ? "" : " " + limit.unit);
        out << "prodtest: " << limit.name << " " << judged << ": " << (pass ? "PASS" : "FAIL")
            << "\n";
        result.properties.push_back({"measured", precise(value, limit)});
        result.output = "measured " + judged + " (" + bounds + ")";
        if (!pass) {
            ++failed;
            result.failure = result.output;
        }
        facts.cases.push_back(result);
    }
    std::string error;
    const bool written = write_file_atomically(report_, junit_xml(facts), error);
    const size_t count = description_.limits.size();
    char measured[32];
    std::snprintf(measured, sizeof measured, "%.3f", measured_.seconds);
    if (!complete) {
        out << "prodtest: stopped after " << measured << " s of the test; no verdict";
    } else if (unmeasured > 0 || clipped > 0) {
        out << "prodtest: ERROR, ";
        const char* separator = "";
        for (const auto& [number, what] : {std::pair{unmeasured, "without a sample"},
                                           {clipped, "clipped"},
                                           {failed, "out of limits"}}) {
            if (number > 0) {
                out << separator << number
                    << (*separator == 0 ? " of " + std::to_string(count) + " parameters "
                                        : std::string(" "))
                    << what;
                separator = ", ";
            }
        }
    } else if (failed == 0) {
        out << "prodtest: PASS, " << count << " of " << count << " parameters within limits";
    } else {
        out << "prodtest: FAIL, " << failed << " of " << count << " parameters out of limits";
    }
    out << (written ? " (report " + report_ + ")" : std::string()) << std::endl;
    if (!written) {
        errors << "prodtest: " << error << std::endl;
        return -1;
    }
    if (!complete) {
        return -1;
    }
    return failed == 0 && unmeasured == 0 && clipped == 0 ? 0 : 1;
}

}  // namespace standin::sim
