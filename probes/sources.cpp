#include "sources.h"

#include "common/text_input.h"
#include "sim/probe.h"
#include "sim/sim_source.h"

namespace standin::sim {

namespace {

constexpr probe_traits simulator_traits{
    "the probe simulator",
    max_sample_rate,
    {{low_range.name, low_range.window_s}, {high_range.name, high_range.window_s}},
    true,
    false,
    false};

// A PPK2 streams 100000 samples/s and switches its range itself: "lo" and
// "hi" both mean auto-ranging and keep the same window. Its logic inputs
// carry the firmware's marks.
constexpr probe_traits ppk2_traits{"a PPK2", 100'000, {{"lo", 2000}, {"hi", 2000}},
                                   false,    true,    true};

constexpr std::string_view ppk2_word = "ppk2";

}  // namespace

std::optional<probe_choice> parse_probe_choice(std::string_view device, std::string& error) {
    if (device == default_device_name || device == probe_name) {
        return probe_choice{};
    }
    if (device == ppk2_word) {
        return probe_choice{probe_choice::kind::ppk2, {}};
    }
    if (device.size() > ppk2_word.size() + 1 && device.substr(0, ppk2_word.size()) == ppk2_word &&
        device[ppk2_word.size()] == ':') {
        return probe_choice{probe_choice::kind::ppk2,
                            std::string(device.substr(ppk2_word.size() + 1))};
    }
    error = "unknown device '" + std::string(device) + "'; the probe simulator answers to '" +
            std::string(default_device_name) + "' and '" + std::string(probe_name) + "'";
    return std::nullopt;
}

const probe_traits& traits_of(const probe_choice& choice) {
    return choice.probe == probe_choice::kind::ppk2 ? ppk2_traits : simulator_traits;
}

std::unique_ptr<sample_source> make_source(const probe_choice& choice,
                                           const source_request& request, std::string& error) {
    if (choice.probe == probe_choice::kind::ppk2) {
        return make_ppk2_source(choice.port, request, error);
    }
    return std::make_unique<sim_source>(request);
}

std::optional<capture_settings> check_capture_options(const wattscope_options& options,
                                                      std::string& error) {
    std::optional<board_model> board =
        read_session_board(std::string(VX_UTL::text_of(options.config)), error);
    if (!board) {
        return std::nullopt;
    }
    const std::optional<probe_choice> choice =
        parse_probe_choice(VX_UTL::text_of(options.device), error);
    if (!choice) {
        return std::nullopt;
    }
    return check_capture_settings(options, std::move(*board), traits_of(*choice), error);
}

std::unique_ptr<capture> make_capture(capture_settings settings, std::string& error) {
    const std::optional<probe_choice> choice = parse_probe_choice(settings.device, error);
    if (!choice) {
        return nullptr;
    }
    source_request request;
    request.board = settings.board;
    request.config_name = base_name(settings.config);
    request.rate = settings.rate;
    request.range = settings.range;
    request.trace_plus = settings.trace_plus;
    request.trigger = settings.trigger;
    std::unique_ptr<sample_source> source = make_source(*choice, request, error);
    return source ? capture::create(std::move(settings), std::move(source), error) : nullptr;
}

std::unique_ptr<production_test> make_production_test(const prodtest_options& options,
                                                      std::string& error) {
    return production_test::create(
        options,
        [](std::string_view device, const source_request& request, std::string& problem) {
            const std::optional<probe_choice> choice = parse_probe_choice(device, problem);
            if (!choice) {
                return std::unique_ptr<sample_source>();
            }
            const probe_traits& traits = traits_of(*choice);
            if (request.rate > traits.max_rate) {
                problem = "rate " + std::to_string(request.rate) + " is out of range for " +
                          std::string(traits.name) + "; use 1 to " +
                          std::to_string(traits.max_rate) + " samples per second";
                return std::unique_ptr<sample_source>();
            }
            return make_source(*choice, request, problem);
        },
        error);
}

}  // namespace standin::sim
