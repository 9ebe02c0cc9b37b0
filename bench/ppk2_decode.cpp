// What the PPK2's host side costs without the port: a recorded stream
// (ppk2-emulator --record) decoded and averaged again and again, as the
// reader and the capture do it. Prints nanoseconds per device sample.
//
//   bench_ppk2_decode FILE [rate] [seconds]

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <span>
#include <vector>

#include "ppk2/averager.h"
#include "ppk2/stream_decoder.h"

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: bench_ppk2_decode FILE [rate] [seconds]\n");
        return 2;
    }
    std::ifstream in(argv[1], std::ios::binary);
    const std::vector<uint8_t> stream{std::istreambuf_iterator<char>(in),
                                      std::istreambuf_iterator<char>()};
    const int32_t rate = argc > 2 ? std::atoi(argv[2]) : 1000;
    const double seconds = argc > 3 ? std::atof(argv[3]) : 2.0;
    if (stream.size() < 4096 || rate < 1 || rate > probes::ppk2::device_rate) {
        std::fprintf(stderr,
                     "bench_ppk2_decode: need a recorded stream and a rate of 1 to 100000\n");
        return 2;
    }
    const probes::ppk2::converter convert(probes::ppk2::calibration{}, 3.3);
    std::vector<probes::ppk2::device_sample> samples;
    std::vector<probes::ppk2::period> periods;
    std::vector<probes::ppk2::logic_share> shares;
    uint64_t decoded = 0;
    uint64_t made = 0;
    const auto begun = std::chrono::steady_clock::now();
    auto elapsed = [&] {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - begun).count();
    };
    // A fresh decoder per pass: the recording's counter doesn't run on from its end.
    while (elapsed() < seconds) {
        probes::ppk2::stream_decoder decoder(convert);
        probes::ppk2::averager average(rate);
        for (size_t at = 0; at < stream.size(); at += 16384) {
            const size_t size = std::min<size_t>(16384, stream.size() - at);
            samples.clear();
            decoder.feed(std::span(stream).subspan(at, size), samples);
            periods.clear();
            shares.clear();
            average.add(samples, periods, shares);
            decoded += samples.size();
            made += periods.size();
        }
    }
    const double took = elapsed();
    std::printf(
        "decoder and averager at %d/s: %.1f ns per device sample, %.2f%% of a core at "
        "100000 samples/s (%llu samples, %llu rows)\n",
        rate, took * 1e9 / static_cast<double>(decoded),
        took * 1e5 * 100 / static_cast<double>(decoded), static_cast<unsigned long long>(decoded),
        static_cast<unsigned long long>(made));
    return 0;
}
