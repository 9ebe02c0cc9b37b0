#define WIN32_LEAN_AND_MEAN
#include <windows.h>

// Windows sets the priority asked for, whatever the creator's.
int own_priority() {
    return GetThreadPriority(GetCurrentThread());
}

int priority_after(int, int asked) {
    return asked;
}
