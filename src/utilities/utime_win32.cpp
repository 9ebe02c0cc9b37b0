#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "utilities/utime.h"

namespace VX_UTL {

uTime::snapshot_t uTime::local_time() {
    SYSTEMTIME local{};
    GetLocalTime(&local);

    snapshot_t moment{};
    moment.year = local.wYear;
    moment.month = local.wMonth;
    moment.day = local.wDay;
    moment.hour = local.wHour;
    moment.minute = local.wMinute;
    moment.second = local.wSecond;
    moment.millisecond = local.wMilliseconds;
    moment.day_of_week = local.wDayOfWeek;
    return moment;
}

}  // namespace VX_UTL
