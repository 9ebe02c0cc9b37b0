#include <fcntl.h>
#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>

#include "utilities/uconsole.h"

namespace VX_UTL {

namespace {

sigset_t interrupt_set() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    sigaddset(&set, SIGHUP);
    return set;
}

// The terminal's modes before any line editor changed them; written by the
// constructor before the signal thread exists, read by end_process_now.
struct saved_terminal {
    bool saved = false;
    termios modes{};
};
saved_terminal terminal_at_start;

// The destructor wakes the signal thread with a SIGINT queued to that thread
// alone, carrying the address of the state; a Ctrl+C comes from the terminal
// or from kill, and carries no value. (A plain pthread_kill can't be told
// apart: the C library reports it as coming from kill.)
bool is_wake_up(const siginfo_t& info, const void* state) {
    return info.si_code == SI_QUEUE && info.si_pid == getpid() && info.si_value.sival_ptr == state;
}

// An event the routine didn't handle goes where it would have gone without
// us: the signal is let through on this thread alone and raised, so its own
// disposition acts (by default it ends the process).
void pass_on(int signal_number) {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, signal_number);
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    raise(signal_number);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

}  // namespace

// Shared by the constructing thread and the signal thread, which the
// destructor joins before it frees this.
struct uConsoleControl::platform_state {
    static void* entry(void* argument);
    void serve(int signal_number) const;
    void serve_pending() const;

    console_ctrl_routine routine = nullptr;
    sigset_t previous_mask{};  // Of the constructing thread.
    pthread_t thread{};
};

void* uConsoleControl::platform_state::entry(void* argument) {
    const platform_state& state = *static_cast<platform_state*>(argument);
    const sigset_t set = interrupt_set();
    for (;;) {
        siginfo_t info{};
        if (sigwaitinfo(&set, &info) < 0) {
            continue;
        }
        if (is_wake_up(info, &state)) {
            // A signal sent to this thread is taken before one sent to the
            // process, so a Ctrl+C may still wait behind the wake-up.
            state.serve_pending();
            return nullptr;
        }
        state.serve(info.si_signo);
    }
}

void uConsoleControl::platform_state::serve(int signal_number) const {
    if (!routine(signal_number == SIGINT ? CTRL_C_EVENT : TERMINATE_EVENT)) {
        pass_on(signal_number);
    }
}

void uConsoleControl::platform_state::serve_pending() const {
    const sigset_t set = interrupt_set();
    for (;;) {
        sigset_t pending;
        if (sigpending(&pending) != 0 ||
            (sigismember(&pending, SIGINT) != 1 && sigismember(&pending, SIGTERM) != 1 &&
             sigismember(&pending, SIGHUP) != 1)) {
            return;
        }
        siginfo_t info{};
        if (sigwaitinfo(&set, &info) > 0) {
            serve(info.si_signo);
        }
    }
}

void keep_running_on_closed_output() {
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    sigemptyset(&ignore.sa_mask);
    sigaction(SIGPIPE, &ignore, nullptr);
    // A write past the file size limit (ulimit -f) then fails with EFBIG,
    // and the writer keeps its file whole, rather than the process dying.
    sigaction(SIGXFSZ, &ignore, nullptr);
}

void keep_standard_descriptors_open() {
    // Opened in order, so each open takes the lowest free number: its own.
    for (int descriptor = 0; descriptor <= 2; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) == -1 && errno == EBADF) {
            static_cast<void>(open("/dev/null", descriptor == 0 ? O_RDONLY : O_WRONLY));
        }
    }
}

void keep_line_ends_unchanged() {
    // POSIX streams translate nothing.
}

void end_process_now(int status) {
    if (terminal_at_start.saved) {
        tcsetattr(STDIN_FILENO, TCSANOW, &terminal_at_start.modes);
    }
    _exit(status);
}

uConsoleControl::uConsoleControl(console_ctrl_routine routine) {
    auto building = std::make_unique<platform_state>();
    building->routine = routine;
    terminal_at_start.saved =
        isatty(STDIN_FILENO) == 1 && tcgetattr(STDIN_FILENO, &terminal_at_start.modes) == 0;
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
    sigval wake_up{};
    wake_up.sival_ptr = state.get();
    while (pthread_sigqueue(state->thread, SIGINT, wake_up) == EAGAIN) {
        // The limit of queued signals is reached for the moment.
        sched_yield();
    }
    pthread_join(state->thread, nullptr);
    // From here on a Ctrl+C takes SIGINT's own disposition (SIGTERM and
    // SIGHUP theirs): by default it ends the process, and nothing of ours runs.
    pthread_sigmask(SIG_SETMASK, &state->previous_mask, nullptr);
}

}  // namespace VX_UTL
