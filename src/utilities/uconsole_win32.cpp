// The header first: <windows.h> defines the CTRL_*_EVENT names as macros,
// which would break the header's own enumerators of the same names.
#include "utilities/uconsole.h"

#define WIN32_LEAN_AND_MEAN
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cstdio>
#include <cstdlib>

namespace VX_UTL {

// The routine of the one uConsoleControl alive. The system calls the handler
// on a thread of its own; the lock lets the destructor wait for a call under
// way and keeps later calls from reaching the routine.
struct uConsoleControl::platform_state {
    static BOOL WINAPI handler(DWORD control_type);

    static SRWLOCK lock;
    static console_ctrl_routine routine;  // Guarded by lock.
};

SRWLOCK uConsoleControl::platform_state::lock = SRWLOCK_INIT;
console_ctrl_routine uConsoleControl::platform_state::routine = nullptr;

BOOL WINAPI uConsoleControl::platform_state::handler(DWORD control_type) {
    AcquireSRWLockShared(&lock);
    const bool handled = routine != nullptr && routine(control_type);
    ReleaseSRWLockShared(&lock);
    // FALSE hands the event on, in the end to the default that ends the
    // process.
    return handled ? TRUE : FALSE;
}

void keep_running_on_closed_output() {
    // A write to a closed pipe fails here anyway; there is no signal for it.
}

void end_process_now(int status) {
    std::_Exit(status);
}

void keep_standard_descriptors_open() {
    // The C runtime marks the number of a missing standard stream as in use
    // (with no handle), so no file opened later takes it: nothing to do.
}

namespace {
UINT console_output_code_page = 0;  // Set once at start, before any thread.

void restore_console_output_code_page() {
    SetConsoleOutputCP(console_output_code_page);
}
}  // namespace

void keep_line_ends_unchanged() {
    // The C runtime's text mode would turn CR LF into LF on input, end the
    // input at Ctrl+Z and write LF as CR LF; the shell handles CR LF itself.
    _setmode(_fileno(stdin), _O_BINARY);
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    // Names are UTF-8 (the manifest's code page): a console shows them as
    // such only in its UTF-8 code page, which the shared console gets back
    // at exit.
    DWORD mode = 0;
    const bool to_console = GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode) != 0 ||
                            GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
    console_output_code_page = GetConsoleOutputCP();
    if (to_console && console_output_code_page != CP_UTF8 && SetConsoleOutputCP(CP_UTF8) != 0) {
        std::atexit(&restore_console_output_code_page);
    }
}

uConsoleControl::uConsoleControl(console_ctrl_routine routine) {
    AcquireSRWLockExclusive(&platform_state::lock);
    platform_state::routine = routine;
    ReleaseSRWLockExclusive(&platform_state::lock);
    if (SetConsoleCtrlHandler(&platform_state::handler, TRUE) == 0) {
        AcquireSRWLockExclusive(&platform_state::lock);
        platform_state::routine = nullptr;
        ReleaseSRWLockExclusive(&platform_state::lock);
        return;
    }
    state = std::make_unique<platform_state>();
}

uConsoleControl::~uConsoleControl() {
    if (state == nullptr) {
        return;
    }
    SetConsoleCtrlHandler(&platform_state::handler, FALSE);
    // Waits for a call under way; one that comes after finds no routine.
    AcquireSRWLockExclusive(&platform_state::lock);
    platform_state::routine = nullptr;
    ReleaseSRWLockExclusive(&platform_state::lock);
}

}  // namespace VX_UTL
