// A use-case library for the tests. Each command picks its behaviour
// through the words of its file name (wattscope's output, prodtest's input),
// separated by "_" or ".":
//
//   null      create gives a null handle
//   ret<N>    run returns N (default 0)
//   ms<N>     run lasts N ms, or until stop
//   wait      run lasts until stop
//   meet      run lasts until a second run is in progress at the same time
//             (or until stop, or 10 s)
//   say       run writes "<use case> <handle> running" to standard output
//   env       create records LD_LIBRARY_PATH
//   where     create records the file the library was loaded from
//
// Without ms, wait or meet, run returns at once. Every create and destroy
// appends lines to double_record.txt in the working directory: the fields
// of the record as received, and at destroy how the handle was used.

#include <dlfcn.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "usecases/usecase_abi.h"

namespace {

struct behaviour {
    bool null_handle = false;
    int32_t result = 0;
    int milliseconds = 0;  // 0: no time of its own
    bool until_stop = false;
    bool meet = false;
    bool say = false;
    bool env = false;
    bool where = false;
};

behaviour parse_behaviour(const std::string& name) {
    behaviour b;
    std::string word;
    for (std::size_t i = 0; i <= name.size(); ++i) {
        if (i < name.size() && name[i] != '_' && name[i] != '.') {
            word += name[i];
            continue;
        }
        if (word == "null") {
            b.null_handle = true;
        } else if (word.rfind("ret", 0) == 0 && word.size() > 3) {
            b.result = std::atoi(word.c_str() + 3);
        } else if (word.rfind("ms", 0) == 0 && word.size() > 2) {
            b.milliseconds = std::atoi(word.c_str() + 2);
        } else if (word == "wait") {
            b.until_stop = true;
        } else if (word == "meet") {
            b.meet = true;
        } else if (word == "say") {
            b.say = true;
        } else if (word == "env") {
            b.env = true;
        } else if (word == "where") {
            b.where = true;
        }
        word.clear();
    }
    return b;
}

struct handle_state {
    int id = 0;
    const char* use_case = "";
    behaviour how;
    std::mutex lock;
    std::condition_variable wake;
    bool stop_requested = false;  // Guarded by lock.
    std::atomic<int> runs{0};
    std::atomic<int> stops{0};
    const char* ended = "none";  // Written by run, read by destroy after it.
    bool met = false;            // The same.
};

std::atomic<int> next_id{1};

// Every handle not yet destroyed. Some tests leave one behind on purpose (a
// library without a destroy function); kept reachable from here, it is no
// leak to a leak checker. Never freed, so it outlives static destruction.
std::mutex live_lock;
std::set<handle_state*>* const live = new std::set<handle_state*>;

// Runs in progress, and the most seen at once; for "meet".
std::mutex meeting_lock;
std::condition_variable meeting;
int running = 0;  // Guarded by meeting_lock.
int peak = 0;     // Guarded by meeting_lock.

std::mutex record_lock;

void record(const std::vector<std::string>& lines) {
    const std::lock_guard<std::mutex> hold(record_lock);
    FILE* file = std::fopen("double_record.txt", "a");
    if (file == nullptr) {
        return;
    }
    for (const std::string& line : lines) {
        std::fprintf(file, "%s\n", line.c_str());
    }
    std::fclose(file);
}

std::string loaded_from() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&parse_behaviour), &info) == 0 ||
        info.dli_fname == nullptr) {
        return "?";
    }
    return info.dli_fname;
}

void* create_handle(const char* use_case, const std::string& name, std::vector<std::string> lines) {
    const behaviour how = parse_behaviour(name);
    handle_state* state = nullptr;
    std::string head = std::string(use_case) + "_create ";
    if (how.null_handle) {
        head += "null";
    } else {
        state = new handle_state;
        state->id = next_id++;
        state->use_case = use_case;
        state->how = how;
        head += std::to_string(state->id);
        const std::lock_guard<std::mutex> hold(live_lock);
        live->insert(state);
    }
    lines.insert(lines.begin(), head);
    if (how.env) {
        const char* search = std::getenv("LD_LIBRARY_PATH");
        lines.push_back(std::string("LD_LIBRARY_PATH=") + (search != nullptr ? search : ""));
    }
    if (how.where) {
        lines.push_back("library=" + loaded_from());
    }
    record(lines);
    return state;
}

int32_t run_handle(void* handle) {
    auto* state = static_cast<handle_state*>(handle);
    state->runs++;
    if (state->how.say) {
        std::printf("%s %d running\n", state->use_case, state->id);
        std::fflush(stdout);
    }
    bool stopped = false;
    if (state->how.meet) {
        {
            const std::lock_guard<std::mutex> hold(meeting_lock);
            peak = std::max(peak, ++running);
        }
        meeting.notify_all();
        std::unique_lock<std::mutex> hold(meeting_lock);
        state->met = meeting.wait_for(hold, std::chrono::seconds(10), [] { return peak >= 2; });
        --running;
    }
    std::unique_lock<std::mutex> hold(state->lock);
    if (state->how.until_stop) {
        state->wake.wait(hold, [state] { return state->stop_requested; });
    } else if (state->how.milliseconds > 0) {
        state->wake.wait_for(hold, std::chrono::milliseconds(state->how.milliseconds),
                             [state] { return state->stop_requested; });
    }
    stopped = state->stop_requested;
    state->ended = stopped ? "stopped" : "self";
    return state->how.result;
}

int32_t stop_handle(void* handle) {
    auto* state = static_cast<handle_state*>(handle);
    state->stops++;
    {
        const std::lock_guard<std::mutex> hold(state->lock);
        state->stop_requested = true;
    }
    state->wake.notify_all();
    return 0;
}

int32_t destroy_handle(void* handle) {
    auto* state = static_cast<handle_state*>(handle);
    std::string line = std::string(state->use_case) + "_destroy " + std::to_string(state->id) +
                       " runs=" + std::to_string(state->runs) +
                       " stops=" + std::to_string(state->stops) + " end=" + state->ended;
    if (state->how.meet) {
        line += state->met ? " met=1" : " met=0";
    }
    record({line});
    {
        const std::lock_guard<std::mutex> hold(live_lock);
        live->erase(state);
    }
    delete state;
    return 0;
}

std::string shared_slot_text(const std::shared_ptr<void>& slot) {
    return slot == nullptr && slot.use_count() == 0 ? "empty" : "set";
}

}  // namespace

#ifdef USECASE_UNDERSCORE
#define USECASE_EXPORT(name) _##name
#else
#define USECASE_EXPORT(name) name
#endif

extern "C" {

int32_t USECASE_EXPORT(wattscope_create)(const wattscope_options* options, void** handle) {
    *handle = create_handle(
        "wattscope", options->output,
        {"sampfreq=" + std::to_string(options->sampfreq), "output=" + options->output,
         "format=" + options->format, "trace_mode=" + options->trace_mode,
         "config=" + options->config, "device=" + options->device,
         "maxoutsize=" + std::to_string(options->maxoutsize), "range=" + options->range,
         "duration=" + std::to_string(options->duration), "trig=" + std::to_string(options->trig),
         "saveall=" + std::to_string(options->saveall),
         "shared_slot=" + shared_slot_text(options->shared_slot)});
    return 0;
}

#ifndef USECASE_NO_WATTSCOPE_RUN
int32_t USECASE_EXPORT(wattscope_run)(void* handle) {
    return run_handle(handle);
}
#endif

int32_t USECASE_EXPORT(wattscope_stop)(void* handle) {
    return stop_handle(handle);
}

#ifndef USECASE_NO_WATTSCOPE_DESTROY
int32_t USECASE_EXPORT(wattscope_destroy)(void* handle) {
    return destroy_handle(handle);
}
#endif

int32_t USECASE_EXPORT(prodtest_create)(const prodtest_options* options, void** handle) {
    *handle = create_handle(
        "prodtest", options->input,
        {"input=" + options->input, "config=" + options->config, "device=" + options->device});
    return 0;
}

int32_t USECASE_EXPORT(prodtest_run)(void* handle) {
    return run_handle(handle);
}

#ifndef USECASE_NO_PRODTEST_STOP
int32_t USECASE_EXPORT(prodtest_stop)(void* handle) {
    return stop_handle(handle);
}
#endif

int32_t USECASE_EXPORT(prodtest_destroy)(void* handle) {
    return destroy_handle(handle);
}

}  // extern "C"
