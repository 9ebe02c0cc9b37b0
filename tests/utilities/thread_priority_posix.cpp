#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>

// The thread's own nice value, which falls as the priority asked for rises.
int own_priority() {
    return getpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)));
}

int priority_after(int inherited, int asked) {
    return std::clamp(inherited - asked, -20, 19);
}
