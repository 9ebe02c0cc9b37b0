#pragma once

// One prodtest run: measures the simulated target in real time for the time
// the test description asks, judges each parameter against its limits,
// prints the results and writes a JUnit report beside the description.

#include <atomic>
#include <memory>
#include <ostream>
#include <string>

#include "common/board.h"
#include "usecases/usecase_abi.h"
#include "engine/stop_signal.h"
#include "engine/test_file.h"

namespace standin::sim {

// Averages of the simulated measurement, in SI units.
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
    uint64_t sleep_samples = 0;  // The rest are active.
    uint64_t clipped = 0;        // Readings cut to the range's full scale.
    uint64_t sleep_clipped = 0;
    int64_t clipped_peak_na = 0;  // The largest true current of a clipped sample.

    double value_of(test_parameter parameter) const;
    // The samples a parameter is made of; a parameter of none has no value.
    uint64_t samples_of(test_parameter parameter) const;
    // Those of them that were clipped: the parameter's value is then wrong.
    uint64_t clipped_of(test_parameter parameter) const;
};

class production_test {
  public:
    // Null, with `error`, when the description, the board or the device is wrong.
    static std::unique_ptr<production_test> create(const prodtest_options& options,
                                                   std::string& error);

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

    bool measure();  // False when stopped.

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
