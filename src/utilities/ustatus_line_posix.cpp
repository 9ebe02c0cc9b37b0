#include <fcntl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <mutex>
#include <string_view>
#include <thread>

#include "utilities/udescriptor_posix.h"
#include "utilities/ustatus_line.h"

namespace VX_UTL {

// Standard output and error are carried by a pipe while the line is up; a
// thread of its own copies them to the terminal, behind the erasure.
struct uStatusLine::platform_state {
    void start();
    void copy();
    void erase();                     // Under `lock`.
    void put(std::string_view text);  // Under `lock`.

    bool started = false;        // Main thread only.
    int screen = STDOUT_FILENO;  // The terminal; a copy of 1 while started.
    int saved_error = -1;        // The terminal's 2, when 2 goes into the pipe.
    int pipe_read = -1;          // The copying thread's.
    termios saved_mode{};        // Main thread only.
    bool mode_changed = false;   // Main thread only.
    std::thread copier;          // Joined by end() on the main thread.
    std::mutex lock;             // Over the writes to `screen` and the two below.
    bool shown = false;
    bool at_line_start = true;
};

void uStatusLine::platform_state::put(std::string_view text) {
    if (!write_all(screen, text)) {
        shown = false;  // A terminal gone away: nothing more to erase.
    }
}

void uStatusLine::platform_state::erase() {
    if (shown) {
        // Erased below too: a terminal that narrowed may have wrapped it.
        put("\r\x1b[J");
        shown = false;
    }
}

void uStatusLine::platform_state::start() {
    started = true;
    std::cout.flush();
    std::cerr.flush();
    std::fflush(nullptr);
    // Keys typed now wait for the line editor, which echoes them itself;
    // without canonical mode the first key tells input_waiting at once.
    if (tcgetattr(STDIN_FILENO, &saved_mode) == 0) {
        termios quiet = saved_mode;
        quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO | ICANON);
        quiet.c_cc[VMIN] = 1;
        quiet.c_cc[VTIME] = 0;
        mode_changed = tcsetattr(STDIN_FILENO, TCSANOW, &quiet) == 0;
    }
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return;
    }
    const int output = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    struct stat out_info {
    }, error_info{};
    const bool error_here = isatty(STDERR_FILENO) == 1 && fstat(STDOUT_FILENO, &out_info) == 0 &&
                            fstat(STDERR_FILENO, &error_info) == 0 &&
                            out_info.st_rdev == error_info.st_rdev;
    if (output < 0 || dup2(ends[1], STDOUT_FILENO) < 0) {
        close(ends[0]);
        close(ends[1]);
        if (output >= 0) {
            close(output);
        }
        return;
    }
    screen = output;
    if (error_here) {
        saved_error = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
        if (saved_error >= 0 && dup2(ends[1], STDERR_FILENO) < 0) {
            close(saved_error);
            saved_error = -1;
        }
    }
    close(ends[1]);
    pipe_read = ends[0];
    copier = std::thread(&platform_state::copy, this);
}

void uStatusLine::platform_state::copy() {
    char buffer[4096];
    for (;;) {
        const ssize_t count = read_some(pipe_read, buffer, sizeof buffer);
        if (count <= 0) {
            return;  // Every writing end is closed: end() gave 1 and 2 back.
        }
        const std::lock_guard<std::mutex> held(lock);
        erase();
        put(std::string_view(buffer, static_cast<std::size_t>(count)));
        at_line_start = buffer[count - 1] == '\n';
    }
}

uStatusLine::uStatusLine() : state(std::make_unique<platform_state>()) {}

uStatusLine::~uStatusLine() {
    end();
}

void uStatusLine::show(const std::string& text) {
    if (!state->started) {
        state->start();
    }
    const std::lock_guard<std::mutex> held(state->lock);
    if (!state->at_line_start) {
        return;  // A line of output isn't finished; it would run into ours.
    }
    // The cursor stays at the start: any output begins at the left margin.
    state->erase();
    state->put(text + '\r');
    state->shown = true;
}

void uStatusLine::hide() {
    const std::lock_guard<std::mutex> held(state->lock);
    state->erase();
}

void uStatusLine::end() {
    if (!state->started) {
        return;
    }
    state->started = false;
    std::cout.flush();
    std::cerr.flush();
    std::fflush(nullptr);
    if (state->pipe_read >= 0) {
        // Closes the pipe's writing ends, so the copier drains it and stops.
        dup2(state->screen, STDOUT_FILENO);
        if (state->saved_error >= 0) {
            dup2(state->saved_error, STDERR_FILENO);
            close(state->saved_error);
            state->saved_error = -1;
        }
        state->copier.join();
        close(state->pipe_read);
        state->pipe_read = -1;
    }
    {
        const std::lock_guard<std::mutex> held(state->lock);
        state->erase();
        state->at_line_start = true;
    }
    if (state->screen != STDOUT_FILENO) {
        close(state->screen);
        state->screen = STDOUT_FILENO;
    }
    if (state->mode_changed) {
        tcsetattr(STDIN_FILENO, TCSANOW, &state->saved_mode);
        state->mode_changed = false;
    }
}

}  // namespace VX_UTL
