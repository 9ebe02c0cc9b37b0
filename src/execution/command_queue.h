#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "execution/command_runnable.h"
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
    void start_all();
    // Stops the running entries; waits for none of them.
    void stop_all();
    // Stops each entry at its limit, waits until none runs, destroys all.
    void wait_all();

  private:
    void stop_at_limit(command_data_t& entry, int32_t elapsed);
    void clean_up();

    // Ascending keys are the order of add. Changed on the main thread only,
    // and then under `mutex`, which stop_all holds too; never held across the
    // waits of wait_all.
    std::map<uint32_t, command_data_t*> entries;
    VX_UTL::uMutex mutex;
    uint32_t next_sequence = 1;  // Main thread only. Never reset.
};

extern command_queue global_command_queue;
