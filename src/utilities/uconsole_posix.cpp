#include <pthread.h>
#include <signal.h>

#include <atomic>

#include "utilities/uconsole.h"

namespace VX_UTL {

namespace {

sigset_t interrupt_set() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    return set;
}

// An event the routine didn't handle goes where it would have gone without
// us: SIGINT is let through on this thread alone and raised, so its own
// disposition acts (by default it ends the process).
void pass_on_interrupt() {
    const sigset_t set = interrupt_set();
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    raise(SIGINT);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

}  // namespace

// Shared by the constructing thread and the signal thread, which the
// destructor joins before it frees this.
struct uConsoleControl::platform_state {
    static void* entry(void* argument);

    console_ctrl_routine routine = nullptr;
    sigset_t previous_mask{};  // Of the constructing thread.
    pthread_t thread{};
    // Set by the destructor before it wakes the thread with a SIGINT of its
    // own, so that the thread ends instead of calling the routine.
    std::atomic<bool> stopping{false};
};

void* uConsoleControl::platform_state::entry(void* argument) {
    platform_state& state = *static_cast<platform_state*>(argument);
    const sigset_t set = interrupt_set();
    for (;;) {
        int taken = 0;
        if (sigwait(&set, &taken) != 0) {
            continue;
        }
        if (state.stopping.load()) {
            return nullptr;
        }
        if (!state.routine(CTRL_C_EVENT)) {
            pass_on_interrupt();
        }
    }
}

uConsoleControl::uConsoleControl(console_ctrl_routine routine) {
    auto building = std::make_unique<platform_state>();
    building->routine = routine;
    // The block comes first, so that the signal thread and every thread
    // created after it inherit it, and a Ctrl+C can reach no thread but the
    // one that waits for it.
    const sigset_t set = interrupt_set();
    if (pthread_sigmask(SIG_BLOCK, &set, &building->previous_mask) != 0) {
        return;
    }
    if (pthread_create(&building->thread, nullptr, &platform_state::entry, building.get()) != 0) {
        pthread_sigmask(SIG_SETMASK, &building->previous_mask, nullptr);
        return;
    }
    state = std::move(building);
}

uConsoleControl::~uConsoleControl() {
    if (state == nullptr) {
        return;
    }
    state->stopping.store(true);
    pthread_kill(state->thread, SIGINT);
    pthread_join(state->thread, nullptr);
    // A Ctrl+C that came in while the thread was told to end, and any one
    // after this, takes SIGINT's own disposition.
    pthread_sigmask(SIG_SETMASK, &state->previous_mask, nullptr);
}

}  // namespace VX_UTL
