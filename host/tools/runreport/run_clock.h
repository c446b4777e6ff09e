// Times of day in logs as microseconds since a run's start.
#pragma once

#include <cstdint>

namespace runreport {

class RunClock {
  public:
    /** @param startedUs microseconds since the epoch; its local time of day is that of the logs */
    explicit RunClock(int64_t startedUs);

    // Across midnight, too. Times up to an hour before the start count as before it.
    int64_t sinceStart(int hours, int minutes, int seconds, int micros) const;

  private:
    int64_t mStartOfDayUs;
};

}  // namespace runreport
