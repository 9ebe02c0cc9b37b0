// ppk2-emulator: a PPK2 on a pseudo-terminal, for tests and for people
// without the instrument. The pty, the clock and the signals live here; the
// device itself is plain code (emulator_device).

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "common/board_file.h"
#include "common/text_input.h"
#include "emulator_device.h"

namespace {

using namespace ppk2_emulator;
using clock_type = std::chrono::steady_clock;

volatile sig_atomic_t stop_requested = 0;

void request_stop(int) {
    stop_requested = 1;
}

// The stream is made in blocks of this period; shorter costs wake-ups.
constexpr auto block = std::chrono::milliseconds(4);
// At most this many samples at a time, so that a device that runs late (a
// slow or busy machine) still reads commands and writes between batches, and
// comes late rather than losing samples the host would have read.
constexpr uint64_t batch = 2000;

struct failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

std::string system_error(const std::string& what) {
    return what + ": " + std::strerror(errno);
}

void set_raw(int fd) {
    termios tio{};
    if (tcgetattr(fd, &tio) == 0) {
        cfmakeraw(&tio);
        tcsetattr(fd, TCSANOW, &tio);
    }
}

// The master's fd and the slave's path; the slave stays open here so that the
// host's closing it is no hang-up and the settings persist between opens.
struct terminal {
    int master = -1;
    int slave = -1;
    std::string path;
};

terminal open_terminal(const options& opts) {
    terminal t;
    if (opts.fd) {
        t.master = *opts.fd;
        if (fcntl(t.master, F_GETFD) < 0) {
            throw failure(system_error("--fd " + std::to_string(t.master)));
        }
    } else {
        t.master = posix_openpt(O_RDWR | O_NOCTTY);
        if (t.master < 0 || grantpt(t.master) != 0 || unlockpt(t.master) != 0) {
            throw failure(system_error("pseudo-terminal"));
        }
    }
    const char* name = ptsname(t.master);
    t.path = name ? name : "fd " + std::to_string(t.master);
    if (name) {
        t.slave = open(name, O_RDWR | O_NOCTTY);
        if (t.slave >= 0) {
            set_raw(t.slave);
        }
        if (opts.fd && t.slave >= 0) {
            // umockdev's host opens the slave itself.
            close(t.slave);
            t.slave = -1;
        }
    }
    const int flags = fcntl(t.master, F_GETFL);
    fcntl(t.master, F_SETFL, flags | O_NONBLOCK);
    if (opts.link) {
        std::error_code ignored;
        if (std::filesystem::is_symlink(*opts.link)) {
            std::filesystem::remove(*opts.link, ignored);
        }
        if (symlink(t.path.c_str(), opts.link->c_str()) != 0) {
            throw failure(system_error("--link " + *opts.link));
        }
    }
    return t;
}

// Rewritten whole, so that a reader never sees half a report.
bool write_report(const std::string& path, const device& dev) {
    const std::string temporary = path + ".tmp";
    {
        std::ofstream out(temporary, std::ios::trunc);
        out << render_report(dev.figures(), dev.streams());
        if (!out.flush()) {
            std::cerr << "ppk2-emulator: can't write " << temporary << "\n";
            return false;
        }
    }
    std::error_code error;
    std::filesystem::rename(temporary, path, error);
    if (error) {
        std::cerr << "ppk2-emulator: can't write " << path << ": " << error.message() << "\n";
        return false;
    }
    return true;
}

std::ofstream open_output(const std::optional<std::string>& path, std::ios::openmode mode) {
    std::ofstream out;
    if (path) {
        out.open(*path, mode | std::ios::trunc);
        if (!out) {
            throw failure("can't write " + *path);
        }
    }
    return out;
}

void nap(std::chrono::milliseconds ms) {
    const timespec ts{0, static_cast<long>(ms.count()) * 1'000'000};
    nanosleep(&ts, nullptr);
}

int serve(const options& opts) {
    const standin::board_model board = standin::read_board_file(opts.board);
    std::ofstream log = open_output(opts.command_log, std::ios::out);
    std::ofstream record = open_output(opts.record, std::ios::binary);
    device dev(opts, board);
    // A report from the start: its place is checked before anyone connects.
    if (opts.report && !write_report(*opts.report, dev)) {
        return 1;
    }
    terminal term = open_terminal(opts);

    clock_type::time_point stream_start;
    clock_type::time_point stalled_until;
    dev.on_command = [&](const std::string& line) {
        if (log.is_open()) {
            log << line << std::endl;
        }
    };
    dev.on_stream_start = [&] {
        stream_start = clock_type::now();
        stalled_until = stream_start;
    };
    dev.on_stream_end = [&] {
        if (record.is_open()) {
            record.flush();
        }
        if (opts.report) {
            write_report(*opts.report, dev);
        }
    };
    if (record.is_open()) {
        dev.on_stream_bytes = [&](std::string_view bytes) {
            record.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        };
    }

    struct sigaction action {};
    action.sa_handler = request_stop;
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);

    std::cout << term.path << std::endl;

    const auto backlog_bytes = static_cast<size_t>(opts.backlog_s * samples_per_second * 4);
    uint8_t input[4096];
    while (!stop_requested) {
        const auto now = clock_type::now();
        const auto due_now = [&] {
            const auto elapsed =
                std::chrono::duration_cast<std::chrono::nanoseconds>(now - stream_start);
            return static_cast<uint64_t>(elapsed.count() / (1'000'000'000 / samples_per_second));
        };
        if (dev.streaming() && now >= stalled_until) {
            const uint64_t due = due_now();
            if (dev.pending().size() > backlog_bytes) {
                dev.lose_until(due);
            } else if (const auto stall =
                           dev.produce_until(std::min(due, dev.position() + batch))) {
                stalled_until = now + std::chrono::milliseconds(*stall);
            }
        }
        bool hung_up = false;
        while (!dev.pending().empty()) {
            const std::string_view bytes = dev.pending();
            const ssize_t n =
                write(term.master, bytes.data(), std::min<size_t>(bytes.size(), 65536));
            if (n > 0) {
                dev.consume(static_cast<size_t>(n));
                continue;
            }
            if (n < 0 && errno == EINTR) {
                continue;
            }
            hung_up = n < 0 && errno == EIO;
            break;
        }
        pollfd pfd{term.master, POLLIN, 0};
        if (!dev.pending().empty() && !hung_up) {
            pfd.events |= POLLOUT;
        }
        // Behind the clock (a slow machine, a sanitizer): no waiting until caught up.
        const bool behind = dev.streaming() && now >= stalled_until && dev.position() < due_now();
        const int timeout = behind ? 0 : dev.streaming() ? static_cast<int>(block.count()) : 100;
        if (poll(&pfd, 1, timeout) < 0) {
            if (errno == EINTR) {
                continue;
            }
            throw failure(system_error("poll"));
        }
        if (pfd.revents & POLLIN) {
            const ssize_t n = read(term.master, input, sizeof input);
            if (n > 0) {
                dev.receive(std::span<const uint8_t>(input, static_cast<size_t>(n)));
            } else if (n < 0 && errno != EAGAIN && errno != EINTR) {
                hung_up = true;
            }
        }
        if (hung_up || (pfd.revents & POLLHUP)) {
            // No one has the terminal open: wait for the host to come (back).
            nap(std::chrono::milliseconds(10));
        }
    }

    if (opts.report) {
        write_report(*opts.report, dev);
    }
    if (opts.link) {
        // Only while it is still ours: another emulator may have taken the name.
        std::error_code error;
        if (std::filesystem::read_symlink(*opts.link, error) == term.path && !error) {
            std::filesystem::remove(*opts.link, error);
        }
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const options opts = parse_options(std::vector<std::string>(argv + 1, argv + argc));
        if (opts.help) {
            std::cout << help_text;
            return 0;
        }
        return serve(opts);
    } catch (const usage_error& e) {
        std::cerr << "ppk2-emulator: " << e.what() << "\nTry ppk2-emulator --help.\n";
        return 2;
    } catch (const std::exception& e) {
        std::cerr << "ppk2-emulator: " << e.what() << "\n";
        return 1;
    }
}
