#pragma once

#include <algorithm>

// What a script's exit status tells: the highest that applies to any of its
// lines. Only script mode returns it; the shell's other modes end with 0.
enum exit_status : int {
    exit_all_passed = 0,
    exit_test_failed = 1,      // A use case returned 1: a production test failed.
    exit_use_case_failed = 2,  // Any other result, or stopped by Ctrl+C.
    exit_refused = 3,          // A command said why and did nothing.
};

inline exit_status worse(exit_status a, exit_status b) {
    return std::max(a, b);
}
