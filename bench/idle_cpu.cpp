// Runs one use case that costs no CPU, once without a limit and once stopped
// at its limit, and reports the CPU time of the whole process meanwhile:
// all of it is what the queue spends waiting. Fails above 1% of the run.

#include <sys/resource.h>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <iostream>
#include <mutex>
#include <string>

#include "execution/command_queue.h"

namespace {

// Sleeps for its time, or until stopped.
class sleeping_command : public zelno_command {
  public:
    explicit sleeping_command(int ms) : length(ms) {}
    int32_t run() override {
        std::unique_lock<std::mutex> lock(mutex);
        changed.wait_for(lock, std::chrono::milliseconds(length), [this] { return stopped; });
        return 0;
    }
    void stop() override {
        const std::lock_guard<std::mutex> lock(mutex);
        stopped = true;
        changed.notify_all();
    }

  private:
    int length;
    std::mutex mutex;
    std::condition_variable changed;
    bool stopped = false;
};

double cpu_ms() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto ms = [](const timeval& t) { return t.tv_sec * 1000.0 + t.tv_usec / 1000.0; };
    return ms(usage.ru_utime) + ms(usage.ru_stime);
}

// Returns the CPU share in percent.
double measure(const char* title, int sleep_ms, int32_t duration) {
    command_queue queue;
    queue.add("bench", new sleeping_command(sleep_ms), duration);
    const double cpu_before = cpu_ms();
    const auto wall_before = std::chrono::steady_clock::now();
    queue.start_all();
    queue.wait_all();
    const double cpu = cpu_ms() - cpu_before;
    const double wall =
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - wall_before)
            .count();
    const double share = 100.0 * cpu / wall;
    std::cout << title << ": " << cpu << " ms CPU in " << wall << " ms, " << share << "%"
              << std::endl;
    return share;
}

}  // namespace

int main(int argc, char** argv) {
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 10;
    if (seconds <= 0) {
        std::cerr << "usage: bench_idle_cpu [seconds]" << std::endl;
        return 2;
    }
    const int ms = seconds * 1000;
    const double untimed = measure("no limit, ends by itself", ms, 0);
    const double timed = measure("stopped at its limit", 2 * ms, ms);
    const bool fine = untimed < 1.0 && timed < 1.0;
    std::cout << (fine ? "under 1%" : "1% or more") << std::endl;
    return fine ? 0 : 1;
}
