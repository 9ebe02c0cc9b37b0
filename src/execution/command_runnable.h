#pragma once

#include <atomic>
#include <cstdint>

#include "execution/zelno_command.h"
#include "utilities/umutex.h"
#include "utilities/urunnable.h"

enum command_status : uint32_t {
    status_not_started = 0,
    status_returned_0 = 1,
    status_returned_1 = 2,
    status_returned_other = 3,
    status_running = 4,
};

// Fits one command to a uThread. Owns the command. `status` is written by the
// use-case thread and read by any thread without a lock; `mutex` serialises
// stop() against the deletion of the command.
class command_runnable : public VX_UTL::uRunnable {
public:
    explicit command_runnable(zelno_command* command);
    ~command_runnable() override;
    command_runnable(const command_runnable&) = delete;
    command_runnable& operator=(const command_runnable&) = delete;

    void run() override;
    void stop();
    uint32_t status() const { return status_word.load(); }
    // Blocks while the status equals `old_status`; the use-case thread
    // notifies at each store.
    void wait_while(uint32_t old_status) const { status_word.wait(old_status); }

private:
    zelno_command* command;
    std::atomic<uint32_t> status_word{status_not_started};
    VX_UTL::uMutex mutex;
};
