#include "execution/command_runnable.h"

command_runnable::command_runnable(zelno_command* owned) : command(owned) {}

command_runnable::~command_runnable() {
    // Released before the lock itself goes: a held POSIX mutex can't be
    // destroyed.
    VX_UTL::uMutexLock lock(mutex);
    delete command;
    command = nullptr;
}

void command_runnable::set_status(uint32_t value) {
    // Stored under the lock, so that no waiter tests the old value and then
    // sleeps through the notify.
    const std::lock_guard<std::mutex> hold(status_mutex);
    status_word.store(value);
    status_changed.notify_all();
}

void command_runnable::wait_while(uint32_t old_status) const {
    std::unique_lock<std::mutex> hold(status_mutex);
    status_changed.wait(hold, [this, old_status] { return status_word.load() != old_status; });
}

void command_runnable::run() {
    set_status(status_running);
    const int32_t result = command->run();
    set_status(result == 0   ? status_returned_0
               : result == 1 ? status_returned_1
                             : status_returned_other);
    // A stop still inside the command finishes before the thread leaves.
    mutex.lock();
    mutex.unlock();
}

void command_runnable::stop() {
    VX_UTL::uMutexLock lock(mutex);
    if (command != nullptr) {
        command->stop();
    }
}
