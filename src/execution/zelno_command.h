#pragma once

#include <cstdint>
#include <optional>
#include <string>

// What a use case can tell of its run so far; each figure only if known.
struct run_figures {
    std::optional<uint64_t> samples;
    std::optional<double> mean_current_a;
    std::optional<double> energy_j;
};

// A use case: run() does the whole job on the calling thread; stop(), from
// another thread, makes a run() in progress end. stop() must be accepted
// before run() has really begun, more than once, and just after run()
// returned.
class zelno_command {
  public:
    virtual ~zelno_command() = default;
    virtual int32_t run() = 0;
    virtual void stop() = 0;
    // From another thread while run() is in progress, for display only.
    virtual run_figures figures() { return {}; }
    // The file that run() writes, if one; main thread only.
    virtual std::string output_file() const { return {}; }
};
