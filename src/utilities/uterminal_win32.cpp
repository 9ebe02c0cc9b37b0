#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <iostream>
#include <vector>

#include "utilities/uterminal.h"

namespace VX_UTL {

namespace {

bool is_console(DWORD which) {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(which), &mode) != 0;
}

// The status line is drawn with escape sequences, which a console reads only
// once asked to; one that can't be asked gets the plain prompt instead.
bool takes_escape_sequences() {
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    if (GetConsoleMode(output, &mode) == 0 ||
        SetConsoleMode(output, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) == 0) {
        return false;
    }
    // Some consoles say yes and keep the old mode; the mode read back tells.
    return GetConsoleMode(output, &mode) != 0 && (mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

}  // namespace

bool uTerminal::is_interactive() {
    return is_console(STD_INPUT_HANDLE) && is_console(STD_OUTPUT_HANDLE) &&
           takes_escape_sequences();
}

int32_t uTerminal::width() {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &info) == 0) {
        return 0;
    }
    return info.srWindow.Right - info.srWindow.Left + 1;
}

bool uTerminal::input_waiting() {
    // The console queues mouse, focus and key-up events too; only a key
    // pressed counts as input.
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    DWORD count = 0;
    if (GetNumberOfConsoleInputEvents(input, &count) == 0 || count == 0) {
        return false;
    }
    std::vector<INPUT_RECORD> events(count);
    DWORD read = 0;
    if (PeekConsoleInputA(input, events.data(), count, &read) == 0) {
        return false;
    }
    for (DWORD index = 0; index < read; ++index) {
        if (events[index].EventType == KEY_EVENT && events[index].Event.KeyEvent.bKeyDown) {
            return true;
        }
    }
    return false;
}

std::string uTerminal::history_file() {
    // The console keeps its own history of the lines typed.
    return {};
}

// The console's own line editing serves: arrows, the console's history of
// this run, no completion.
struct uLineEditor::platform_state {};

uLineEditor::uLineEditor(std::string, completer) : state(std::make_unique<platform_state>()) {}

uLineEditor::~uLineEditor() = default;

std::string uLineEditor::take_problem() {
    return {};
}

bool uLineEditor::read(const char* prompt, std::string& line) {
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    line.clear();
    std::cout << prompt << std::flush;
    for (;;) {
        char buffer[1024];
        DWORD count = 0;
        const BOOL done = ReadConsoleA(input, buffer, sizeof buffer, &count, nullptr);
        if (done == 0 && GetLastError() != ERROR_OPERATION_ABORTED) {
            return false;
        }
        if (count == 0) {
            // A Ctrl+C ends the read with nothing: the line is dropped and
            // the prompt comes afresh, as with the line editor elsewhere.
            line.clear();
            std::cout << '\n' << prompt << std::flush;
            continue;
        }
        line.append(buffer, count);
        if (line.front() == '\x1a') {
            return false;  // Ctrl+Z, the console's end of input.
        }
        if (line.back() == '\n') {
            return true;
        }
    }
}

}  // namespace VX_UTL
