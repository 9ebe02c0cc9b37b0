#include <windows.h>

#include <atomic>
#include <cctype>
#include <mutex>

#include "serial/serial_port.h"

namespace probes {

namespace {

constexpr DWORD initial_read_timeout_ms = 1000;

// COM5 and com5 become \\.\COM5, the only spelling that reaches COM10 and
// above; a name already in the device namespace stays as it is.
std::string device_path(const std::string& name) {
    if (name.rfind("\\\\.\\", 0) == 0) {
        return name;
    }
    const bool com = name.size() > 3 && std::toupper(static_cast<unsigned char>(name[0])) == 'C' &&
                     std::toupper(static_cast<unsigned char>(name[1])) == 'O' &&
                     std::toupper(static_cast<unsigned char>(name[2])) == 'M' &&
                     name.find_first_not_of("0123456789", 3) == std::string::npos;
    return com ? "\\\\.\\" + name : name;
}

std::string system_text(DWORD code) {
    char* text = nullptr;
    const DWORD length = FormatMessageA(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, code, 0, reinterpret_cast<char*>(&text), 0, nullptr);
    std::string result = length ? std::string(text, length) : "error " + std::to_string(code);
    LocalFree(text);
    while (!result.empty() && (result.back() == '\n' || result.back() == '\r' ||
                               result.back() == ' ' || result.back() == '.')) {
        result.pop_back();
    }
    return result;
}

// What a failed open means to the user, in words that don't depend on the
// system's language for the common cases.
std::string open_failure(DWORD code) {
    switch (code) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
            return "there is no such port";
        case ERROR_ACCESS_DENIED:
        case ERROR_SHARING_VIOLATION:
            return "it is in use by another program, or access is denied";
        default:
            return system_text(code);
    }
}

// What a USB port whose device was unplugged answers, and (broken pipe) a
// pseudo-terminal under Wine whose other side closed.
bool is_gone(DWORD code) {
    return code == ERROR_BROKEN_PIPE || code == ERROR_BAD_COMMAND || code == ERROR_ACCESS_DENIED ||
           code == ERROR_DEVICE_REMOVED || code == ERROR_GEN_FAILURE ||
           code == ERROR_DEVICE_NOT_CONNECTED || code == ERROR_FILE_NOT_FOUND ||
           code == ERROR_INVALID_HANDLE;
}

// Owns the port's handle, opened for overlapped I/O, and an event that
// interrupt() sets so that a waiting read stops at once. read() runs on one
// thread (the reader), write() on another, and interrupt() and error() on
// any: the error text is guarded, each I/O direction has its own event.
class win32_serial_port final : public byte_port {
  public:
    win32_serial_port(std::string name, HANDLE port, HANDLE wake, HANDLE read_done,
                      HANDLE write_done)
        : name_(std::move(name)),
          port_(port),
          wake_(wake),
          read_done_(read_done),
          write_done_(write_done) {}

    ~win32_serial_port() override {
        CloseHandle(port_);
        CloseHandle(wake_);
        CloseHandle(read_done_);
        CloseHandle(write_done_);
    }

    std::ptrdiff_t read(void* into, size_t size, int timeout_ms) override {
        if (interrupted_.load()) {
            return 0;
        }
        // Returns as soon as a byte is there, or after the timeout with none.
        const DWORD wait = timeout_ms < 0 ? MAXDWORD - 1 : static_cast<DWORD>(timeout_ms);
        if (wait != read_timeout_) {
            COMMTIMEOUTS timeouts{};
            timeouts.ReadIntervalTimeout = MAXDWORD;
            timeouts.ReadTotalTimeoutMultiplier = wait == 0 ? 0 : MAXDWORD;
            timeouts.ReadTotalTimeoutConstant = wait;
            timeouts.WriteTotalTimeoutConstant = serial_write_limit_ms;
            if (!SetCommTimeouts(port_, &timeouts)) {
                return fail(GetLastError(), "can't read from");
            }
            read_timeout_ = wait;
        }
        OVERLAPPED request{};
        request.hEvent = read_done_;
        const DWORD chunk = size > MAXDWORD ? MAXDWORD : static_cast<DWORD>(size);
        DWORD got = 0;
        if (!ReadFile(port_, into, chunk, nullptr, &request)) {
            const DWORD code = GetLastError();
            if (code != ERROR_IO_PENDING) {
                return fail(code, "can't read from");
            }
            const HANDLE events[] = {read_done_, wake_};
            // The port's own timeout ends the read; this wait's limit is
            // for a driver that ignores it.
            const DWORD waited =
                WaitForMultipleObjects(2, events, FALSE, timeout_ms < 0 ? INFINITE : wait + 1000);
            if (waited != WAIT_OBJECT_0) {
                CancelIoEx(port_, &request);
            }
        }
        // Bytes that came before a cancellation are still the caller's.
        if (!GetOverlappedResult(port_, &request, &got, TRUE) &&
            GetLastError() != ERROR_OPERATION_ABORTED) {
            return fail(GetLastError(), "can't read from");
        }
        return static_cast<std::ptrdiff_t>(got);
    }

    bool write(const void* data, size_t size) override {
        const auto* bytes = static_cast<const char*>(data);
        while (size > 0) {
            OVERLAPPED request{};
            request.hEvent = write_done_;
            const DWORD chunk = size > 65536 ? 65536 : static_cast<DWORD>(size);
            DWORD put = 0;
            if (!WriteFile(port_, bytes, chunk, nullptr, &request) &&
                GetLastError() != ERROR_IO_PENDING) {
                fail(GetLastError(), "can't write to");
                return false;
            }
            if (!GetOverlappedResult(port_, &request, &put, TRUE)) {
                fail(GetLastError(), "can't write to");
                return false;
            }
            if (put == 0) {
                std::lock_guard lock(error_lock_);
                error_ = "can't write to the port '" + name_ + "': the device takes no data";
                return false;
            }
            bytes += put;
            size -= put;
        }
        return true;
    }

    void interrupt() override {
        interrupted_.store(true);
        SetEvent(wake_);
    }

    std::string error() const override {
        std::lock_guard lock(error_lock_);
        return error_;
    }

  private:
    std::ptrdiff_t fail(DWORD code, const char* doing) {
        std::lock_guard lock(error_lock_);
        error_ = is_gone(code)
                     ? "the port '" + name_ + "' is gone"
                     : std::string(doing) + " the port '" + name_ + "': " + system_text(code);
        return -1;
    }

    const std::string name_;
    const HANDLE port_;
    const HANDLE wake_;        // Manual reset: once set, every later wait ends too.
    const HANDLE read_done_;   // The reader thread's.
    const HANDLE write_done_;  // The writer's.
    DWORD read_timeout_ = initial_read_timeout_ms;  // The reader thread's: the port's now.
    std::atomic<bool> interrupted_{false};
    mutable std::mutex error_lock_;
    std::string error_;  // Guarded by error_lock_.
};

}  // namespace

std::unique_ptr<byte_port> open_serial_port(const std::string& name, std::string& error) {
    const std::string refusal = "can't open the port '" + name + "': ";
    // Not shared: a second user of a port would take half of its bytes.
    const HANDLE port = CreateFileA(device_path(name).c_str(), GENERIC_READ | GENERIC_WRITE, 0,
                                    nullptr, OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr);
    if (port == INVALID_HANDLE_VALUE) {
        error = refusal + (name.empty() ? "there is no such port" : open_failure(GetLastError()));
        return nullptr;
    }
    auto refuse = [&](const std::string& reason) -> std::unique_ptr<byte_port> {
        CloseHandle(port);
        error = refusal + reason;
        return nullptr;
    };
    DCB settings{};
    settings.DCBlength = sizeof settings;
    if (GetFileType(port) != FILE_TYPE_CHAR || !GetCommState(port, &settings)) {
        return refuse("it is not a serial port");
    }
    // 8N1 with no flow control and no character translation; the baud rate
    // stays as it is, which USB instruments ignore.
    settings.fBinary = TRUE;
    settings.fParity = FALSE;
    settings.ByteSize = 8;
    settings.Parity = NOPARITY;
    settings.StopBits = ONESTOPBIT;
    settings.fOutxCtsFlow = FALSE;
    settings.fOutxDsrFlow = FALSE;
    settings.fDtrControl = DTR_CONTROL_ENABLE;
    settings.fRtsControl = RTS_CONTROL_ENABLE;
    settings.fDsrSensitivity = FALSE;
    settings.fOutX = FALSE;
    settings.fInX = FALSE;
    settings.fErrorChar = FALSE;
    settings.fNull = FALSE;
    settings.fAbortOnError = FALSE;
    if (settings.BaudRate == 0) {
        settings.BaudRate = CBR_115200;
    }
    if (!SetCommState(port, &settings)) {
        return refuse(system_text(GetLastError()));
    }
    // Until the first read sets its own: reads wait a second at most, and a
    // write that the device doesn't take ends with a failure.
    COMMTIMEOUTS timeouts{};
    timeouts.ReadIntervalTimeout = MAXDWORD;
    timeouts.ReadTotalTimeoutMultiplier = MAXDWORD;
    timeouts.ReadTotalTimeoutConstant = initial_read_timeout_ms;
    timeouts.WriteTotalTimeoutConstant = serial_write_limit_ms;
    if (!SetCommTimeouts(port, &timeouts)) {
        return refuse(system_text(GetLastError()));
    }
    const HANDLE wake = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    const HANDLE read_done = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    const HANDLE write_done = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    if (!wake || !read_done || !write_done) {
        const DWORD code = GetLastError();
        for (const HANDLE handle : {port, wake, read_done, write_done}) {
            if (handle) {
                CloseHandle(handle);
            }
        }
        error = refusal + system_text(code);
        return nullptr;
    }
    return std::make_unique<win32_serial_port>(name, port, wake, read_done, write_done);
}

}  // namespace probes
