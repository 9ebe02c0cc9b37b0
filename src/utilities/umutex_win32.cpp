#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "utilities/umutex.h"

namespace VX_UTL {

struct uMutex::platform_lock {
    CRITICAL_SECTION section;
};

uMutex::uMutex() : critical_section(std::make_unique<platform_lock>()) {
    InitializeCriticalSection(&critical_section->section);
}

uMutex::~uMutex() {
    DeleteCriticalSection(&critical_section->section);
}

void uMutex::enter() {
    EnterCriticalSection(&critical_section->section);
}

void uMutex::leave() {
    LeaveCriticalSection(&critical_section->section);
}

}  // namespace VX_UTL
