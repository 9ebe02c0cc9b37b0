#include "engine/function_table.h"

#include <algorithm>
#include <cstdio>

namespace standin::sim {

namespace {

std::vector<size_t> most_energy_first(std::vector<size_t> order,
                                      const std::vector<function_figures>& figures) {
    std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) {
        return figures[a].energy_nj > figures[b].energy_nj;
    });
    return order;
}

double percent(double part, double whole) {
    return whole > 0 ? part / whole * 100 : 0;
}

}  // namespace

std::string function_table_path(const std::string& output) {
    return output + ".functions.csv";
}

std::string function_table_csv(const std::vector<std::string>& names,
                               const std::vector<function_figures>& figures) {
    function_figures all;
    std::vector<size_t> ran;
    for (size_t i = 0; i < figures.size(); ++i) {
        all += figures[i];
        if (figures[i].samples > 0) {
            ran.push_back(i);
        }
    }
    std::string text =
        "function,samples,time_s,time_percent,mean_current_A,charge_C,energy_J,energy_percent\n";
    for (size_t i : most_energy_first(ran, figures)) {
        const function_figures& f = figures[i];
        char numbers[256];
        std::snprintf(numbers, sizeof numbers, ",%llu,%.9f,%.3f,%.9f,%.9f,%.9f,%.3f\n",
                      static_cast<unsigned long long>(f.samples), f.seconds,
                      percent(f.seconds, all.seconds),
                      f.seconds > 0 ? f.charge_nc * 1e-9 / f.seconds : 0.0, f.charge_nc * 1e-9,
                      f.energy_nj * 1e-9, percent(f.energy_nj, all.energy_nj));
        text += (i < names.size() ? names[i] : "-") + numbers;
    }
    return text;
}

std::vector<size_t> summary_order(const std::vector<function_figures>& figures) {
    std::vector<size_t> order;
    for (size_t i = 0; i + 1 < figures.size(); ++i) {
        if (figures[i].samples > 0) {
            order.push_back(i);
        }
    }
    return most_energy_first(order, figures);
}

}  // namespace standin::sim
