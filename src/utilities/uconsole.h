#pragma once

#include <cstdint>

namespace VX_UTL {

// Console control events, numbered as the platform numbers them.
enum : uint32_t {
    CTRL_C_EVENT = 0,
    CTRL_BREAK_EVENT = 1,
    CTRL_CLOSE_EVENT = 2,
    CTRL_LOGOFF_EVENT = 5,
    CTRL_SHUTDOWN_EVENT = 6,
};

using console_ctrl_routine = bool (*)(uint32_t control_type);

// Routes console control events to `routine`, on a thread other than the
// main thread, until the object is destroyed. On POSIX: SIGINT is blocked in
// every thread and one thread takes it with sigwait, as CTRL_C_EVENT. Must be
// constructed before any other thread exists.
class uConsoleControl {
public:
    explicit uConsoleControl(console_ctrl_routine routine);
    ~uConsoleControl();
    uConsoleControl(const uConsoleControl&) = delete;
    uConsoleControl& operator=(const uConsoleControl&) = delete;

    bool installed() const { return active; }

private:
    struct platform_state;
    platform_state* state = nullptr;
    bool active = false;
};

}  // namespace VX_UTL
