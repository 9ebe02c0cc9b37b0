#pragma once

// One prodtest run: measures the target through its sample source for the
// time the test description asks, judges each parameter against its limits,
// prints the results and writes a JUnit report beside the description.

#include <atomic>
#include <functional>
#include <memory>
#include <ostream>
#include <string>

#include "common/board.h"
#include "engine/sample_source.h"
#include "engine/stop_signal.h"
#include "engine/test_file.h"
#include "usecases/usecase_abi.h"

namespace standin::sim {

// Averages of the measurement, in SI units.
struct test_measurement {
    double seconds = 0;
    double supply_voltage = 0;
    double mean_current = 0;
    double sleep_current = 0;
    double active_current = 0;
    double peak_current = 0;
    double mean_power = 0;
    double cycle_energy = 0;
    uint64_t samples = 0;
    uint64_t sleep_samples = 0;   // Marked asleep by the firmware.
    uint64_t active_samples = 0;  // Marked active; a source without marks has neither.
    uint64_t clipped = 0;         // Readings cut to the range's full scale.
    // Of the sleep and active samples: where a source splits periods by
    // marks, the samples of a clipped period's shares.
    uint64_t sleep_clipped = 0;
    uint64_t active_clipped = 0;

    double value_of(test_parameter parameter) const;
    // The samples a parameter is made of; a parameter of none has no value.
    uint64_t samples_of(test_parameter parameter) const;
    // Those of them that were clipped: the parameter's value is then wrong.
    uint64_t clipped_of(test_parameter parameter) const;
};

// Makes the source that the session's device word names; null, with
// `error`, when it can't.
using source_maker = std::function<std::unique_ptr<sample_source>(
    std::string_view device, const source_request& request, std::string& error)>;

class production_test {
  public:
    // Null, with `error`, when the description, the board or the device is wrong.
    static std::unique_ptr<production_test> create(const prodtest_options& options,
                                                   const source_maker& make_source,
                                                   std::string& error);
    production_test(const production_test&) = delete;
    production_test& operator=(const production_test&) = delete;
    ~production_test();

    // On the use case's thread; 0 when all parameters pass, 1 when any
    // fails or has no sample, -1 when stopped or the report can't be written.
    int run(std::ostream& out, std::ostream& errors);

    // From any thread, at any time, any number of times.
    void stop() { stop_.request(); }

    const test_measurement& measurement() const { return measured_; }

    // From any thread while run() runs.
    uint64_t samples_taken() const { return taken_.load(std::memory_order_relaxed); }

  private:
    production_test() = default;

    bool measure();  // False when stopped or the source failed.
    void finish_source();

    // Made on the main thread, used on the run's; the destructor finishes
    // it when run() never did.
    std::unique_ptr<sample_source> source_;
    bool finished_ = false;
    board_model board_;
    std::string input_;
    std::string config_;
    std::string report_;
    test_description description_;
    stop_signal stop_;  // The only member that other threads touch.
    test_measurement measured_;
    std::atomic<uint64_t> taken_{0};  // Read by other threads, for progress.
};

}  // namespace standin::sim
