#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "execution/command_runnable.h"
#include "execution/exit_status.h"
#include "execution/zelno_command.h"
#include "utilities/umutex.h"
#include "utilities/uthread.h"

// One queued use case. Owns its runnable and thread.
class command_data_t {
  public:
    virtual ~command_data_t();

    std::string name;
    command_runnable* runnable = nullptr;
    VX_UTL::uThread* thread = nullptr;
    int32_t duration = 0;  // Milliseconds; 0 or less is no limit.
    // Not owned: the runnable's command, for its figures while it runs.
    zelno_command* command = nullptr;
    // Set by stop_all under the queue's mutex; read under it by clean_up.
    bool stopped_by_user = false;
    // Set by wait_all under the queue's mutex when it stops the entry at its
    // limit; read under it by stop_all.
    bool stopped_at_limit = false;
};

// One running use case as wait_all reports it to its observer.
struct running_use_case {
    const std::string& name;
    int32_t duration;  // Milliseconds; 0 or less is no limit.
    zelno_command& command;
};

// Told what runs while wait_all waits, on the main thread: update about every
// `period_ms` while anything runs, quiet before the queue prints a line of
// its own, done when the wait is over.
class wait_observer {
  public:
    static constexpr int32_t period_ms = 250;

    virtual ~wait_observer() = default;
    virtual void update(const std::vector<running_use_case>& running) = 0;
    virtual void quiet() = 0;
    virtual void done() = 0;
};

// The use cases of one input line: added by the handlers, started side by
// side, timed and destroyed by wait_all. Main thread only, but for stop_all,
// which the console control thread calls.
class command_queue {
  public:
    command_queue() = default;
    virtual ~command_queue() = default;
    command_queue(const command_queue&) = delete;
    command_queue& operator=(const command_queue&) = delete;

    // Takes ownership of `command`; nothing runs yet.
    void add(std::string name, zelno_command* command, int32_t duration);
    // Starts the entries in order, each one running before the next starts.
    // Gives the names of those that got no thread: they never run, count as
    // failed and are destroyed by wait_all with the rest.
    std::vector<std::string> start_all();
    // Stops the running entries; waits for none of them. An entry in the last
    // `last_stretch_ms` before its limit is left to the limit: it has as good
    // as completed, and its stop there says so. Once stopped at its limit, an
    // entry that still runs is stopped again.
    void stop_all();
    static constexpr int32_t last_stretch_ms = 250;
    // For the end of the process: stops every running entry, also in its
    // last stretch, and from now on starts none and stops any that runs.
    // Any thread.
    void close();
    // Stops each entry at its limit, waits until none runs, destroys all.
    // Gives the worst outcome of the line: the entries' results, a stop by
    // stop_all and any refusal noted since the last wait_all.
    exit_status wait_all();
    // Whether a use case of this line writes `file`; `same` compares names.
    bool writes(const std::string& file,
                bool (*same)(const std::string&, const std::string&)) const;
    // A handler that said why it did nothing marks its line as refused.
    void note_refused() { refused = true; }
    // Null, or an observer that outlives every wait_all after this call.
    void set_observer(wait_observer* watcher) { observer = watcher; }

  private:
    void stop_at_limit(command_data_t& entry, int32_t elapsed);
    exit_status clean_up();
    void report_running();
    bool in_last_stretch(const command_data_t& entry) const;
    void note_wait_begins(int32_t elapsed);

    // Ascending keys are the order of add. Changed on the main thread only,
    // and then under `mutex`, which stop_all holds too; never held across the
    // waits of wait_all.
    std::map<uint32_t, command_data_t*> entries;
    VX_UTL::uMutex mutex;
    uint32_t next_sequence = 1;       // Main thread only. Never reset.
    std::atomic<bool> closed{false};  // Set by close(), on any thread; never cleared.
    // wait_all's elapsed when its current wait began, and when that was by
    // a clock; under `mutex`. The clock serves stop_all's question alone.
    int32_t elapsed_at_wait = 0;
    std::chrono::steady_clock::time_point wait_began;
    bool refused = false;               // Main thread only; cleared by wait_all.
    wait_observer* observer = nullptr;  // Main thread only.
};

extern command_queue global_command_queue;
