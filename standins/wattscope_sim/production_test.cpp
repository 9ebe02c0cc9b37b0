#include "wattscope_sim/production_test.h"

#include <cmath>
#include <cstdio>

#include "common/atomic_file.h"
#include "common/text_input.h"
#include "wattscope_sim/capture_settings.h"
#include "wattscope_sim/front_end.h"
#include "wattscope_sim/junit_report.h"
#include "wattscope_sim/pacing.h"
#include "wattscope_sim/target_model.h"

namespace standin::sim {

namespace {

constexpr auto tick = std::chrono::milliseconds(10);

std::string in_unit(double value, const test_limit& limit) {
    char text[48];
    std::snprintf(text, sizeof text, "%#.4g", value / limit.unit_scale);
    return text + std::string(" ") + limit.unit;
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
    made->report_ = report_path(input);
    return made;
}

bool production_test::measure() {
    const int32_t rate = description_.rate;
    const auto total = static_cast<uint64_t>(std::llround(description_.measure_s * rate));
    target_model model(board_, rate);
    front_end probe(board_, low_range);

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
    for (const test_limit& limit : description_.limits) {
        report_case result{limit.name, {}, {}};
        if (!complete) {
            result.error = "stopped before the measurement ended";
            facts.cases.push_back(result);
            continue;
        }
        // A mean of no samples reads 0 and could pass; it is no measurement.
        if (measured_.samples_of(limit.parameter) == 0) {
            ++unmeasured;
            result.error =
                "no sample of " + limit.name + " in the " + description_.measure_text + " measured";
            out << "prodtest: " << result.error << ": ERROR\n";
            facts.cases.push_back(result);
            continue;
        }
        const double value = measured_.value_of(limit.parameter);
        const double allowed =
            limit.relative ? std::fabs(limit.expected) * limit.tolerance : limit.tolerance;
        const bool pass = std::fabs(value - limit.expected) <= allowed;
        const std::string line = limit.name + " " + in_unit(value, limit) + ", expected " +
                                 limit.expected_text + " " + limit.unit + " +/- " +
                                 limit.tolerance_text + (limit.relative ? "" : " " + limit.unit);
        out << "prodtest: " << line << ": " << (pass ? "PASS" : "FAIL") << "\n";
        if (!pass) {
            ++failed;
            result.failure = "measured " + in_unit(value, limit);
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
    } else if (unmeasured > 0) {
        out << "prodtest: ERROR, " << unmeasured << " of " << count
            << " parameters without a sample";
        if (failed > 0) {
            out << ", " << failed << " out of limits";
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
    return failed == 0 && unmeasured == 0 ? 0 : 1;
}

}  // namespace standin::sim
