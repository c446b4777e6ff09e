// How many accepted connections this process keeps: each has a thread and a descriptor.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <memory>
#include <mutex>
#include <unordered_map>

namespace hostbinder {

class ConnectionPlaces {
  public:
    // A pair of processes needs one connection, and a second one while a lost one ends.
    static constexpr size_t kPerProcess = 32;
    static constexpr size_t kAll = 256;

    // A place that is taken, free again with the object's end.
    class Place {
      public:
        Place(ConnectionPlaces* places, pid_t pid) : mPlaces(places), mPid(pid) {}
        ~Place() { mPlaces->free(mPid); }
        Place(const Place&) = delete;
        Place& operator=(const Place&) = delete;

      private:
        ConnectionPlaces* const mPlaces;
        const pid_t mPid;
    };

    // Lives as long as the process.
    static ConnectionPlaces& instance();

    // Null if the peer process, or all together, have too many.
    std::shared_ptr<Place> take(pid_t pid);

  private:
    void free(pid_t pid);

    std::mutex mMutex;  // guards what follows
    size_t mTaken = 0;
    std::unordered_map<pid_t, size_t> mByProcess;
};

}  // namespace hostbinder
