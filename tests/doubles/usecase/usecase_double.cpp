// A use-case library for the tests. A command picks its behaviour by words
// in its file name (wattscope's output, prodtest's input), separated by "_"
// or ".": "null" (create gives a null handle), "ret<N>" (run returns N),
// "ms<N>" (run lasts N ms, or until stop), "wait" (run lasts until stop),
// "say" (run writes "<use case> <handle> running" to standard output), "env"
// and "where" (create records the library search path, and the variant of
// the library, which tells which file was loaded). Every create and destroy
// appends a line to double_record.txt in the working directory: the record's
// fields as received, read by their bytes (record_fields.c), and at destroy
// how the handle was used. "slot" leaves a reference in wattscope's
// shared_slot, whose release (when zelno destroys the record) is recorded.

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <regex>
#include <string>

#include "host.h"
#include "usecase/record_fields.h"

namespace {

struct handle_state {
    int id = 0;
    const char* use_case = "";
    int32_t result = 0;
    int milliseconds = 0;  // -1: until stop.
    bool say = false;
    std::mutex lock;
    std::condition_variable wake;
    bool stop_requested = false;  // Guarded by lock.
    std::atomic<int> runs{0};
    std::atomic<int> stops{0};
    const char* ended = "none";  // Written by run, read by destroy after it.
};

// Handles come from here, not the heap: one that a library without a
// destroy function leaves behind is then no leak to a leak checker.
handle_state handles[64];
std::atomic<int> next_id{1};

void record(const std::string& lines) {
    static std::mutex record_lock;
    const std::lock_guard<std::mutex> hold(record_lock);
    if (FILE* file = std::fopen("double_record.txt", "a")) {
        std::fprintf(file, "%s\n", lines.c_str());
        std::fclose(file);
    }
}

// Whether the file name holds `word`, and the number behind it (ms20: 20).
bool has(const std::string& name, const char* word, int* number = nullptr) {
    std::smatch found;
    const std::regex pattern(std::string("(^|[_.])") + word + "(-?[0-9]*)([_.]|$)");
    const bool hit =
        std::regex_search(name, found, pattern) && (number == nullptr) == !found[2].length();
    if (hit && number != nullptr) {
        *number = std::stoi(found[2]);
    }
    return hit;
}

void* create_handle(const char* use_case, const std::string& name, const std::string& fields) {
    handle_state* state = nullptr;
    std::string line = std::string(use_case) + "_create null " + fields;
    if (!has(name, "null")) {
        const int id = next_id++;
        state = &handles[id % 64];
        state->id = id;
        state->use_case = use_case;
        state->say = has(name, "say");
        has(name, "ret", &state->result);
        has(name, "ms", &state->milliseconds);
        state->milliseconds = has(name, "wait") ? -1 : state->milliseconds;
        line.replace(line.find("null"), 4, std::to_string(id));
    }
    if (has(name, "env")) {
        line += "\n" + std::string(library_search_variable) + "=" + library_search_path();
    }
    if (has(name, "where")) {
        line += "\nlibrary=" USECASE_VARIANT;
    }
    record(line);
    return state;
}

int32_t run_handle(void* handle) {
    auto* state = static_cast<handle_state*>(handle);
    state->runs++;
    if (state->say) {
        std::printf("%s %d running\n", state->use_case, state->id);
        std::fflush(stdout);
    }
    std::unique_lock<std::mutex> hold(state->lock);
    const auto stopped = [state] { return state->stop_requested; };
    if (state->milliseconds < 0) {
        state->wake.wait(hold, stopped);
    } else {
        state->wake.wait_for(hold, std::chrono::milliseconds(state->milliseconds), stopped);
    }
    state->ended = state->stop_requested ? "stopped" : "self";
    return state->result;
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
    const auto* state = static_cast<handle_state*>(handle);
    record(std::string(state->use_case) + "_destroy " + std::to_string(state->id) +
           " runs=" + std::to_string(state->runs) + " stops=" + std::to_string(state->stops) +
           " end=" + state->ended);
    return 0;
}

}  // namespace

#ifdef USECASE_UNDERSCORE
#define USECASE_EXPORT(name) _##name
#else
#define USECASE_EXPORT(name) name
#endif
#define HANDLE_FUNCTION(name, body)                         \
    extern "C" int32_t USECASE_EXPORT(name)(void* handle) { \
        return body(handle);                                \
    }

// The records come as bytes: the double reads no C++ type of zelno's.
extern "C" int32_t USECASE_EXPORT(wattscope_create)(const unsigned char* options, void** handle) {
    char name[record_text_room];
    char fields[record_line_room];
    describe_wattscope_record(options, name, fields);
    *handle = create_handle("wattscope", name, fields);
    if (has(name, "slot")) {
        // A library may leave a reference there; zelno drops it with the record.
        leave_shared_reference(const_cast<unsigned char*>(options) + shared_slot_offset,
                               [] { record("shared_slot released"); });
    }
    return 0;
}

extern "C" int32_t USECASE_EXPORT(prodtest_create)(const unsigned char* options, void** handle) {
    char name[record_text_room];
    char fields[record_line_room];
    describe_prodtest_record(options, name, fields);
    *handle = create_handle("prodtest", name, fields);
    return 0;
}

#ifndef USECASE_NO_WATTSCOPE_RUN
HANDLE_FUNCTION(wattscope_run, run_handle)
#endif
HANDLE_FUNCTION(wattscope_stop, stop_handle)
#ifndef USECASE_NO_WATTSCOPE_DESTROY
HANDLE_FUNCTION(wattscope_destroy, destroy_handle)
#endif
HANDLE_FUNCTION(prodtest_run, run_handle)
#ifndef USECASE_NO_PRODTEST_STOP
HANDLE_FUNCTION(prodtest_stop, stop_handle)
#endif
HANDLE_FUNCTION(prodtest_destroy, destroy_handle)
