#pragma once

#include <cstdint>
#include <memory>

namespace VX_UTL {

// Console control events, numbered as the platform numbers them.
enum : uint32_t {
    CTRL_C_EVENT = 0,
    CTRL_BREAK_EVENT = 1,
    CTRL_CLOSE_EVENT = 2,
    CTRL_LOGOFF_EVENT = 5,
    CTRL_SHUTDOWN_EVENT = 6,
    // zelno's own, on POSIX only: SIGTERM or SIGHUP, a request to end the
    // process. Windows ends a process through the events above.
    TERMINATE_EVENT = 0x100,
};

// Ends the process at once with `status`, from any thread: no destructor
// runs and no stream is flushed. The terminal gets back the modes it had
// when the uConsoleControl was constructed.
[[noreturn]] void end_process_now(int status);

// Makes a write to a closed output (a pipe whose reader has gone) or past
// the file size limit fail with an error, as it does on Windows, rather than
// end the process. For the whole process; main calls it first, in both modes.
void keep_running_on_closed_output();

// Opens standard input, output and error on the null device where one is
// closed at start, so that no file opened later takes its number and gets
// the console's output. Main calls it before anything else.
void keep_standard_descriptors_open();

// Standard input, output and error carry their bytes unchanged, so that a
// piped session reads and writes the same bytes on every platform: no line
// end is translated (the Windows C runtime would, in its text mode). Main
// calls it first. Does nothing on POSIX.
void keep_line_ends_unchanged();

// True when the event is handled; false passes it on to the platform's
// default, which ends the process.
using console_ctrl_routine = bool (*)(uint32_t control_type);

// Routes console control events to `routine`, on a thread other than the
// main thread, until the object is destroyed; no call of `routine` is under
// way or follows after that. At most one object is alive at a time. On
// Windows the system calls the routine on a thread of its own. On POSIX: SIGINT, SIGTERM and SIGHUP
// are blocked in the constructing thread, and every thread created later inherits that, and one
// thread takes them with sigwaitinfo, as CTRL_C_EVENT and TERMINATE_EVENT. So it must be
// constructed before any other thread exists, and destroyed on the thread that constructed it,
// which gets its signal mask back; a signal after that has its default action.
class uConsoleControl {
  public:
    explicit uConsoleControl(console_ctrl_routine routine);
    ~uConsoleControl();
    uConsoleControl(const uConsoleControl&) = delete;
    uConsoleControl& operator=(const uConsoleControl&) = delete;

    // False if the routing could not be set up; events then take the
    // platform's default.
    bool installed() const { return state != nullptr; }

  private:
    struct platform_state;
    std::unique_ptr<platform_state> state;  // Null when not installed.
};

}  // namespace VX_UTL
