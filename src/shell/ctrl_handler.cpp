#include <atomic>

#include "execution/command_queue.h"
#include "shell/shell.h"

std::unique_ptr<VX_UTL::uConsoleControl> install_ctrl_handler() {
    return std::make_unique<VX_UTL::uConsoleControl>(console_ctrl_handler);
}

namespace {

// Where the main thread is. While it waits for input nothing is half done,
// so the handler may end the process there and then; the state moves from
// `reading` on only once, so one of the two threads owns the ending.
enum main_phase : int { running, reading, ended_by_handler };
std::atomic<int> phase{running};
std::atomic<bool> end_requested{false};
std::atomic<int> status_when_ended{0};

}  // namespace

namespace ending {

void set_status(int status) {
    status_when_ended = status;
}

bool reading_begins() {
    phase = reading;
    if (!end_requested) {
        return true;
    }
    reading_ends();
    return false;
}

void reading_ends() {
    int expected = reading;
    if (!phase.compare_exchange_strong(expected, running)) {
        VX_UTL::end_process_now(status_when_ended);
    }
}

}  // namespace ending

bool console_ctrl_handler(uint32_t control_type) {
    if (control_type == VX_UTL::TERMINATE_EVENT) {
        end_requested = true;
        int expected = reading;
        if (phase.compare_exchange_strong(expected, ended_by_handler)) {
            VX_UTL::end_process_now(status_when_ended);
        }
        // Every use case stops and writes what it has, and the main thread
        // ends the shell when the line is done.
        global_command_queue.close();
        return true;
    }
    if (control_type != VX_UTL::CTRL_C_EVENT) {
        return false;
    }
    global_command_queue.stop_all();
    return true;
}
