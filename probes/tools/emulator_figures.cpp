#include "emulator_figures.h"

#include <cstdio>

namespace ppk2_emulator {

double range_smoothing::next(int range, double amperes) {
    const std::optional<double> before = average_, before4 = average4_;
    average_ = average_ ? alpha * amperes + (1 - alpha) * *average_ : amperes;
    average4_ = average4_ ? alpha_range4 * amperes + (1 - alpha_range4) * *average4_ : amperes;
    if (!previous_range_) {
        previous_range_ = range;
    }
    double value = amperes;
    if (range != *previous_range_ || after_change_ > 0) {
        if (range != *previous_range_) {
            in_range_ = 0;
            after_change_ = replaced;
        } else {
            ++in_range_;
        }
        if (range == 4) {
            if (in_range_ < 2) {
                average_ = before;
                average4_ = before4;
            }
            value = *average4_;
        } else {
            value = *average_;
        }
        --after_change_;
    }
    previous_range_ = range;
    return value;
}

std::string render_report(const stream_figures& f, uint64_t streams) {
    const double seconds = static_cast<double>(f.decoded) * 1e-5;
    const double mean = f.decoded ? f.sum_a / static_cast<double>(f.decoded) : 0.0;
    const double charge = f.sum_a * 1e-5;
    char text[1024];
    std::snprintf(
        text, sizeof text,
        "streams %llu\nwords_sent %llu\nsamples_lost %llu\nwords_slipped %llu\n"
        "samples_decoded %llu\nseconds %.17g\nvoltage_v %.17g\nmean_current_a %.17g\n"
        "peak_current_a %.17g\ncharge_c %.17g\nenergy_j %.17g\n",
        static_cast<unsigned long long>(streams), static_cast<unsigned long long>(f.words_sent),
        static_cast<unsigned long long>(f.lost), static_cast<unsigned long long>(f.slipped),
        static_cast<unsigned long long>(f.decoded), seconds, f.volts, mean, f.peak_a, charge,
        charge * f.volts);
    std::string report = text;
    for (size_t code = 0; code < f.code_samples.size(); ++code) {
        if (f.code_samples[code] == 0) {
            continue;
        }
        std::snprintf(text, sizeof text, "code.%zu.samples %llu\ncode.%zu.sum_a %.17g\n", code,
                      static_cast<unsigned long long>(f.code_samples[code]), code,
                      f.code_sum_a[code]);
        report += text;
    }
    return report;
}

}  // namespace ppk2_emulator
