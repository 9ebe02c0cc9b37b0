#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "execution/zelno_command.h"
#include "utilities/umutex.h"
#include "utilities/urunnable.h"

// Readers compare with 0 and 4 only; the three results lie between them.
enum command_status : uint32_t {
    status_not_started = 0,
    status_returned_0 = 1,
    status_returned_1 = 2,
    status_returned_other = 3,
    status_running = 4,
};

// Fits one command to a uThread. Owns the command. The runnable must outlive
// its thread: the thread takes and releases `mutex` after its last store.
class command_runnable : public VX_UTL::uRunnable {
  public:
    explicit command_runnable(zelno_command* command);
    ~command_runnable() override;
    command_runnable(const command_runnable&) = delete;
    command_runnable& operator=(const command_runnable&) = delete;

    // On the use-case thread, once.
    void run() override;
    // Any thread; doesn't wait for the use case to end.
    void stop();
    uint32_t status() const { return status_word.load(); }
    // Blocks while the status equals `old_status`; the use-case thread
    // notifies at each store, so this stands in for re-reading the word.
    void wait_while(uint32_t old_status) const;

  private:
    void set_status(uint32_t value);

    // Deleted by the destructor under `mutex`; stop() reaches it under `mutex`.
    zelno_command* command;
    // Written by the use-case thread only (after construction); read by any
    // thread without a lock.
    std::atomic<uint32_t> status_word{status_not_started};
    // For the waits on the word. Not the word's own wait: MinGW's runtime
    // can miss its notify, which hung zelno.exe under Wine.
    mutable std::mutex status_mutex;
    mutable std::condition_variable status_changed;
    // Held around the command's stop and its deletion, never during its run.
    VX_UTL::uMutex mutex;
};
