#define WIN32_LEAN_AND_MEAN
#include <process.h>
#include <windows.h>

#include "utilities/uthread.h"

namespace VX_UTL {

// Owns the thread's handle; the last owner closes it. The thread itself gets
// only the runnable's address, so destroying the uThread early frees nothing
// that it uses.
struct uThread::platform_thread {
    explicit platform_thread(HANDLE created) : thread(created) {}
    ~platform_thread() { CloseHandle(thread); }
    platform_thread(const platform_thread&) = delete;
    platform_thread& operator=(const platform_thread&) = delete;

    HANDLE thread;
};

namespace {

unsigned __stdcall thread_entry(void* argument) {
    if (argument != nullptr) {
        static_cast<uRunnable*>(argument)->run();
    }
    return 0;
}

}  // namespace

uThread::uThread(uRunnable* body, int32_t thread_priority, uint32_t thread_stack_size)
    : runnable(body), priority(thread_priority), stack_size(thread_stack_size) {}

uThread::~uThread() = default;

bool uThread::start() {
    if (handle != nullptr) {
        return false;
    }
    unsigned id = 0;
    // Suspended, so that handle, id and priority are in place before the
    // body's first step.
    const uintptr_t created =
        _beginthreadex(nullptr, stack_size, &thread_entry, runnable, CREATE_SUSPENDED, &id);
    if (created == 0) {
        return false;
    }
    handle = std::make_shared<platform_thread>(reinterpret_cast<HANDLE>(created));
    thread_id = id;
    SetThreadPriority(handle->thread, priority);
    return ResumeThread(handle->thread) == 1;
}

bool uThread::wait(uint32_t timeout_ms) {
    if (handle == nullptr) {
        return false;
    }
    return WaitForSingleObject(handle->thread, timeout_ms) == WAIT_OBJECT_0;
}

}  // namespace VX_UTL
