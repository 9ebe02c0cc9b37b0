#include "engine/production_test.h"

#include <cmath>
#include <cstdio>

#include "common/atomic_file.h"
#include "common/native_file.h"
#include "common/text_input.h"
#include "engine/capture_settings.h"
#include "engine/engineering.h"
#include "engine/junit_report.h"

namespace standin::sim {

namespace {

constexpr auto tick = std::chrono::milliseconds(10);
constexpr size_t block_periods = 4096;

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
            return active_samples;
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
            return active_clipped;
        default:
            return clipped;
    }
}

std::unique_ptr<production_test> production_test::create(const prodtest_options& options,
                                                         const source_maker& make_source,
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
    std::optional<board_model> board = read_session_board(config, error);
    if (!board) {
        return nullptr;
    }
    source_request request;
    request.board = *board;
    request.config_name = base_name(config);
    request.rate = made->description_.rate;
    request.range = made->description_.range;
    made->source_ = make_source(VX_UTL::text_of(options.device), request, error);
    if (!made->source_) {
        return nullptr;
    }
    made->board_ = std::move(*board);
    made->input_ = input;
    made->config_ = config;
    made->report_ = report_path(input, made->description_.report);
    if (const char* clash = report_clash(made->report_, input, config)) {
        const int line = made->description_.report_line;
        error = (line == 0 ? "" : input + ":" + std::to_string(line) + ": ") + "the report " +
                made->report_ + " is " + clash;
        return nullptr;
    }
    return made;
}

production_test::~production_test() {
    if (source_) {
        finish_source();
    }
}

void production_test::finish_source() {
    if (!finished_) {
        finished_ = true;
        source_->finish();
    }
}

bool production_test::measure() {
    const int32_t rate = description_.rate;
    const auto total = static_cast<uint64_t>(std::llround(description_.measure_s * rate));
    std::vector<period_sample> block(block_periods);
    const bool averaged = source_->averages();  // Then a period's peak is its max_na.
    double voltage_sum = 0;
    double current_sum = 0;
    double power_sum = 0;
    // Sleep and active time apart, by the firmware's marks: per period, or
    // per device sample where a source splits periods by them.
    struct marked_time {
        double charge_nc = 0;
        double seconds = 0;
        uint64_t samples = 0;
        uint64_t clipped = 0;

        void add(double charge, double time, uint64_t count, bool cut) {
            charge_nc += charge;
            seconds += time;
            samples += count;
            clipped += cut ? count : 0;
        }
    };
    marked_time sleep;
    marked_time active;
    auto time_of = [&](mode_mark mark) {
        return mark == mode_mark::sleep ? &sleep : mark == mode_mark::active ? &active : nullptr;
    };
    const double per_rate = 1.0 / rate;
    int64_t peak = INT64_MIN;
    uint64_t done = 0;   // Periods covered, measured or lost.
    uint64_t taken = 0;  // Periods measured.
    bool stopped = stop_.requested();
    if (!stopped) {
        source_->start(clock::now());
    }
    while (done < total && !stopped && source_->failure().empty()) {
        stopped = stop_.requested();
        const clock::time_point now = clock::now();
        for (sample_source::ready_periods got = source_->poll(now);
             (got.lost != 0 || got.ready != 0) && done < total; got = source_->poll(now)) {
            done += std::min(got.lost, total - done);
            for (uint64_t ready = std::min(got.ready, total - done); ready > 0;) {
                const auto count = static_cast<size_t>(std::min<uint64_t>(ready, block.size()));
                source_->take(block.data(), count);
                const std::span<const period_share> shares = source_->shares();
                size_t share_at = 0;
                for (size_t i = 0; i < count; ++i) {
                    const period_sample& r = block[i];
                    const auto current = static_cast<double>(r.current_na);
                    voltage_sum += static_cast<double>(r.voltage_uv);
                    current_sum += current;
                    power_sum += static_cast<double>(r.power_nw);
                    peak = std::max(peak, averaged ? r.max_na : r.current_na);
                    measured_.clipped += r.clipped ? 1 : 0;
                    if (marked_time* time = r.shares == 0 ? time_of(r.mark) : nullptr) {
                        time->add(current * per_rate, per_rate, 1, r.clipped);
                    }
                    for (uint32_t k = 0; k < r.shares && share_at < shares.size(); ++k) {
                        const period_share& share = shares[share_at++];
                        if (marked_time* time = time_of(share.mark)) {
                            time->add(share.charge_nc, share.seconds, share.samples, r.clipped);
                        }
                    }
                }
                ready -= count;
                done += count;
                taken += count;
            }
        }
        taken_.store(taken, std::memory_order_relaxed);
        if (done < total && !stopped && source_->failure().empty()) {
            stop_.sleep_until(std::max(clock::now() + tick, source_->next_ready_at()));
        }
    }
    finish_source();
    const double n = taken == 0 ? 1.0 : static_cast<double>(taken);
    measured_.samples = taken;
    measured_.sleep_samples = sleep.samples;
    measured_.active_samples = active.samples;
    measured_.sleep_clipped = sleep.clipped;
    measured_.active_clipped = active.clipped;
    measured_.seconds = static_cast<double>(done) / rate;
    measured_.supply_voltage = voltage_sum / n * 1e-6;
    measured_.mean_current = current_sum / n * 1e-9;
    measured_.sleep_current = sleep.seconds > 0 ? sleep.charge_nc / sleep.seconds * 1e-9 : 0;
    measured_.active_current = active.seconds > 0 ? active.charge_nc / active.seconds * 1e-9 : 0;
    measured_.peak_current = taken == 0 ? 0 : static_cast<double>(peak) * 1e-9;
    measured_.mean_power = power_sum / n * 1e-9;
    measured_.cycle_energy = measured_.mean_power * static_cast<double>(board_.cycle_us()) * 1e-6;
    return done == total && source_->failure().empty();
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
    size_t unmeasurable = 0;
    const std::string& failure = source_->failure();
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
            result.error = failure.empty() ? "stopped before the measurement ended"
                                           : "the measurement ended early: " + failure;
            facts.cases.push_back(result);
            continue;
        }
        // A voltage that is a setting, not a reading, would pass by construction.
        if (limit.parameter == test_parameter::supply_voltage && !source_->measures_voltage()) {
            ++unmeasurable;
            result.error = limit.name + " is not measured by " + std::string(source_->name());
            out << "prodtest: " << result.error << ": ERROR\n";
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
                const clip_advice advice = source_->clipping();
                result.error =
                    limit.name + " clipped in " + std::to_string(cut) + " of " +
                    std::to_string(samples) + " samples beyond " +
                    current_text(advice.full_scale_na) +
                    (advice.larger_range.empty()
                         ? " (no range holds them)"
                         : " (range " + advice.larger_range + " holds them: add the line 'range " +
                               advice.larger_range + "' to " + input_ + ")");
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
        out << "prodtest: " << (failure.empty() ? "stopped" : failure + ", measurement ended")
            << " after " << measured << " s of the test; no verdict";
    } else if (unmeasured > 0 || clipped > 0 || unmeasurable > 0) {
        out << "prodtest: ERROR, ";
        const char* separator = "";
        for (const auto& [number, what] : {std::pair{unmeasured, "without a sample"},
                                           {unmeasurable, "not measured by the probe"},
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
    return failed == 0 && unmeasured == 0 && clipped == 0 && unmeasurable == 0 ? 0 : 1;
}

}  // namespace standin::sim
