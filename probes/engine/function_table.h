#pragma once

// What a "ws+" capture ran, by attribution (engine/function_marks.h), and
// the table of it that goes beside the capture file.

#include <cstdint>
#include <string>
#include <vector>

namespace standin::sim {

struct function_figures {
    uint64_t samples = 0;  // The probe's own samples: rows, or a PPK2's device samples.
    double seconds = 0;
    double charge_nc = 0;
    double energy_nj = 0;

    function_figures& operator+=(const function_figures& more) {
        samples += more.samples;
        seconds += more.seconds;
        charge_nc += more.charge_nc;
        energy_nj += more.energy_nj;
        return *this;
    }
};

// The table's file: beside the capture, "<output>.functions.csv".
std::string function_table_path(const std::string& output);

// `figures` holds one entry per name and a last one for time that nothing
// names ("-"). Rows with samples, the most energy first.
std::string function_table_csv(const std::vector<std::string>& names,
                               const std::vector<function_figures>& figures);

// The summary's list, the most energy first: the functions and modes that
// ran, not the time that nothing names. Indices into `figures`.
std::vector<size_t> summary_order(const std::vector<function_figures>& figures);

}  // namespace standin::sim
