// Time of day to time of the run.

#include "run_clock.h"

#include <time.h>

namespace runreport {

namespace {

constexpr int64_t kSecond = 1'000'000;
constexpr int64_t kHour = 3600 * kSecond;
constexpr int64_t kDay = 24 * kHour;

int64_t timeOfDay(int64_t hours, int64_t minutes, int64_t seconds, int64_t micros) {
    return ((hours * 60 + minutes) * 60 + seconds) * kSecond + micros;
}

}  // namespace

RunClock::RunClock(int64_t startedUs) {
    const time_t seconds = startedUs / kSecond;
    tm local = {};
    localtime_r(&seconds, &local);
    mStartOfDayUs = timeOfDay(local.tm_hour, local.tm_min, local.tm_sec, startedUs % kSecond);
}

int64_t RunClock::sinceStart(int hours, int minutes, int seconds, int micros) const {
    int64_t since = timeOfDay(hours, minutes, seconds, micros) - mStartOfDayUs;
    if (since < -kHour) since += kDay;
    if (since >= kDay - kHour) since -= kDay;
    return since;
}

}  // namespace runreport
