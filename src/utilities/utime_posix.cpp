#include <time.h>

#include "utilities/utime.h"

namespace VX_UTL {

uTime::snapshot_t uTime::local_time() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    localtime_r(&now.tv_sec, &local);

    snapshot_t moment{};
    moment.year = local.tm_year + 1900;
    moment.month = local.tm_mon + 1;
    moment.day = local.tm_mday;
    moment.hour = local.tm_hour;
    moment.minute = local.tm_min;
    // A leap second shows as 59: the snapshot's seconds end there.
    moment.second = local.tm_sec > 59 ? 59 : local.tm_sec;
    moment.millisecond = static_cast<int32_t>(now.tv_nsec / 1000000);
    moment.day_of_week = local.tm_wday;
    return moment;
}

}  // namespace VX_UTL
