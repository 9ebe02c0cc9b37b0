// Drives the stand-in libraries without zelno, through the same exported
// functions zelno calls: for the benchmark, for making example captures and
// for trying a board or test file quickly.
//
//   simdrive wattscope [-s RATE] [-D MS] [-f csv|gnuplot] [-r lo|hi]
//                      [--maxoutsize MIB] [--saveall] [-t] -c BOARD -o FILE ws|ws+
//   simdrive prodtest -c BOARD -i LIMITS
//   simdrive convert TARGET.tgcfg BOARD.dat
//
// Like zelno, it stops a capture with a duration itself once that much time
// has passed; the library waits for that stop. It prints the process's CPU
// time in ns on standard error as "simdrive: cpu_ns=<n> wall_ns=<n>" after
// the run.

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

#include "common/native_library.h"
#include "usecases/usecase_abi.h"

namespace {

void* symbol(void* library, const char* name) {
    void* address = standin::library_symbol(library, name);
    if (address == nullptr) {
        std::fprintf(stderr, "simdrive: %s not found\n", name);
        std::exit(2);
    }
    return address;
}

void* open_library(const char* base) {
    std::string error;
    void* library = standin::open_library(base, error);
    if (library == nullptr) {
        std::fprintf(stderr, "simdrive: %s\n", error.c_str());
        std::exit(2);
    }
    return library;
}

[[noreturn]] void usage() {
    std::fprintf(stderr,
                 "usage: simdrive wattscope [-s RATE] [-D MS] [-f FORMAT] [-r RANGE] "
                 "[--maxoutsize MIB] [--saveall] [-t] -c BOARD -o FILE ws|ws+\n"
                 "       simdrive prodtest -c BOARD -i LIMITS\n"
                 "       simdrive convert TARGET BOARD\n");
    std::exit(2);
}

// Runs the use case on a thread of its own, as zelno does, and stops it
// after `duration_ms` when that is above 0.
template <typename Run, typename Stop>
int run_timed(Run run, Stop stop, void* handle, int32_t duration_ms) {
    std::mutex mutex;
    std::condition_variable ended;
    bool done = false;
    int result = 0;
    std::thread runner([&] {
        const int r = run(handle);
        std::lock_guard<std::mutex> lock(mutex);
        result = r;
        done = true;
        ended.notify_all();
    });
    {
        std::unique_lock<std::mutex> lock(mutex);
        if (duration_ms <= 0 ||
            !ended.wait_for(lock, std::chrono::milliseconds(duration_ms), [&] { return done; })) {
            lock.unlock();
            if (duration_ms > 0) {
                stop(handle);
            }
        }
    }
    runner.join();
    return result;
}

template <typename Options, typename Create, typename Run, typename Stop, typename Destroy>
int drive(void* library, const Options& options, int32_t duration_ms, const char* create,
          const char* run, const char* stop, const char* destroy) {
    const auto start_wall = std::chrono::steady_clock::now();
    const int64_t start_cpu = standin::process_cpu_ns();
    void* handle = nullptr;
    reinterpret_cast<Create>(symbol(library, create))(&options, &handle);
    if (handle == nullptr) {
        return 1;
    }
    const int result =
        run_timed(reinterpret_cast<Run>(symbol(library, run)),
                  reinterpret_cast<Stop>(symbol(library, stop)), handle, duration_ms);
    reinterpret_cast<Destroy>(symbol(library, destroy))(handle);
    const auto wall = std::chrono::steady_clock::now() - start_wall;
    std::fprintf(
        stderr, "simdrive: result=%d cpu_ns=%lld wall_ns=%lld\n", result,
        static_cast<long long>(standin::process_cpu_ns() - start_cpu),
        static_cast<long long>(std::chrono::duration_cast<std::chrono::nanoseconds>(wall).count()));
    return result < 0 ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        usage();
    }
    const std::string_view command = argv[1];
    if (command == "convert") {
        if (argc != 4) {
            usage();
        }
        void* library = open_library("tgcfgsetup");
        using convert_fn = int (*)(VX_UTL::uLibraryStringArgument, VX_UTL::uLibraryStringArgument);
        VX_UTL::uStringArgument input(argv[2]);
        VX_UTL::uStringArgument output(argv[3]);
        const int result = reinterpret_cast<convert_fn>(symbol(library, "TGCFGToBoardConfigFile"))(
            input.hand_over(), output.hand_over());
        return result == 0 ? 0 : 1;
    }
    wattscope_options watt{};
    watt.sampfreq = 2000;
    watt.maxoutsize = 1024;
    watt.format = "csv";
    watt.range = "lo";
    watt.device = "unused";
    prodtest_options prod{};
    prod.device = "unused";
    for (int i = 2; i < argc; ++i) {
        const std::string_view word = argv[i];
        const bool has_value = i + 1 < argc;
        auto value = [&]() -> const char* {
            if (!has_value) {
                usage();
            }
            return argv[++i];
        };
        if (word == "-s") {
            watt.sampfreq = std::atoi(value());
        } else if (word == "-D") {
            watt.duration = std::atoi(value());
        } else if (word == "-f") {
            watt.format = value();
        } else if (word == "-r") {
            watt.range = value();
        } else if (word == "--maxoutsize") {
            watt.maxoutsize = std::atoi(value());
        } else if (word == "--saveall") {
            watt.saveall = 1;
        } else if (word == "-t") {
            watt.trig = 1;
        } else if (word == "-c") {
            const char* config = value();
            watt.config = config;
            prod.config = config;
        } else if (word == "-o") {
            watt.output = value();
        } else if (word == "-i") {
            prod.input = value();
        } else if (word == "-d") {
            const char* device = value();
            watt.device = device;
            prod.device = device;
        } else if (word[0] != '-') {
            watt.trace_mode = word;
        } else {
            usage();
        }
    }
    void* library = open_library("wattscopestandalone");
    if (command == "wattscope") {
        return drive<wattscope_options, wattscope_create_fn, wattscope_run_fn, wattscope_stop_fn,
                     wattscope_destroy_fn>(library, watt, watt.duration, "wattscope_create",
                                           "wattscope_run", "wattscope_stop", "wattscope_destroy");
    }
    if (command == "prodtest") {
        return drive<prodtest_options, prodtest_create_fn, prodtest_run_fn, prodtest_stop_fn,
                     prodtest_destroy_fn>(library, prod, 0, "prodtest_create", "prodtest_run",
                                          "prodtest_stop", "prodtest_destroy");
    }
    usage();
}
