#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "execution/command_queue.h"
#include "utilities/ustatus_line.h"

// One running use case as the status line shows it: "wattscope 12.4 s /
// 60 s: 24,800 samples, mean 2.47 mA, 30.6 mJ", the limit and the figures
// only where there are some.
std::string describe_run(std::string_view name, int64_t elapsed_ms, int32_t limit_ms,
                         const run_figures& figures);

// `text` cut to leave the last column of a terminal `width` wide free; as it
// is when the width isn't known (0).
std::string fit_width(std::string text, int32_t width);

// The line at the terminal while use cases run, cut to the terminal's width
// at each update. Main thread only, as the queue's waits that drive it.
class status_line : public wait_observer {
  public:
    void update(const std::vector<running_use_case>& running) override;
    void quiet() override;
    void done() override;

  private:
    bool active = false;  // A wait is under way; `started` is its start.
    std::chrono::steady_clock::time_point started;
    VX_UTL::uStatusLine screen;
    bool input_noticed = false;  // A line was typed during this wait.
};
