#pragma once

// Which sample source a session's device word names, what that probe
// allows, and the use cases made with it. The one place that knows every
// source; the engine knows none.

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "engine/capture.h"
#include "engine/capture_settings.h"
#include "engine/production_test.h"
#include "engine/sample_source.h"
#include "usecases/usecase_abi.h"

namespace standin::sim {

struct probe_choice {
    enum class kind { simulator, ppk2 } probe = kind::simulator;
    std::string port;  // For a PPK2: empty for the one attached, else a path or "COM5".
};

// "unused" and "sim", "ppk2" and "ppk2:<port>"; empty, with `error`, for
// anything else.
std::optional<probe_choice> parse_probe_choice(std::string_view device, std::string& error);

const probe_traits& traits_of(const probe_choice& choice);

std::unique_ptr<sample_source> make_source(const probe_choice& choice,
                                           const source_request& request, std::string& error);

// A PPK2 at `port` (empty: the one attached); null, with `error`, when none
// answers there.
std::unique_ptr<sample_source> make_ppk2_source(const std::string& port,
                                                const source_request& request, std::string& error);

// The checked options of a capture on the session's board and probe.
std::optional<capture_settings> check_capture_options(const wattscope_options& options,
                                                      std::string& error);

// The capture of checked options with the source its device names.
std::unique_ptr<capture> make_capture(capture_settings settings, std::string& error);

std::unique_ptr<production_test> make_production_test(const prodtest_options& options,
                                                      std::string& error);

}  // namespace standin::sim
