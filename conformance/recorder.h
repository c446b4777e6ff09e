// A client's callback object that writes down what the service tells it.
#pragma once

#include <aidl/vendor/zel/hardware/camera/offlinecamera/BnOfflineCameraCallback.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "buffers.h"

namespace conformance {

namespace device = ::aidl::android::hardware::camera::device;
namespace package = ::aidl::vendor::zel::hardware::camera::offlinecamera;
using Clock = std::chrono::steady_clock;

// A buffer as a result or a return names it.
struct BufferMark {
    int32_t stream = 0;
    int64_t id = 0;
    bool good = true;  // its status is OK; of a returned one: the service has written to it

    bool Same(const BufferMark& other) const { return stream == other.stream && id == other.id; }
};

std::string Text(const BufferMark& buffer);  // "stream 1 buffer 7"

struct Event {
    enum Kind { kShutter, kError, kResult, kAsked, kReturned, kEmpty };

    explicit Event(Kind what) : kind(what) {}

    Kind kind;
    Clock::time_point at = Clock::now();
    int32_t frame = 0;      // of kShutter, kError, kResult
    int64_t timestamp = 0;  // of kShutter, nanoseconds
    std::vector<BufferMark>
            buffers;  // of kResult the outputs; of kAsked what was lent; of kReturned
    std::vector<BufferMark> inputs;                                  // of kResult
    int32_t partial = 0;                                             // of kResult
    std::vector<uint8_t> metadata;                                   // of kResult
    Stream stream;                                                   // of kAsked
    int32_t count = 0;                                               // of kAsked
    std::vector<std::shared_ptr<ndk::ScopedFileDescriptor>> fences;  // release fences
    const char* callback = "";                                       // of kEmpty
};

using Events = std::vector<Event>;

// How requestStreamBuffers is answered.
enum class Lend {
    kBuffers,       // as asked for, with the status OK
    kOddStatus,     // the same with another status: the test client leaves it alone
    kNoAnswers,     // an empty list
    kErrorValue,    // NO_BUFFER_AVAILABLE in place of the buffers
    kOneTooFew,     // one buffer less than asked for
    kEmptyHandles,  // buffers without handles, as the test client gives after a failed allocation
    kRefused,       // the call itself fails
};

// Thread-safe.
class Recorder : public package::BnOfflineCameraCallback {
  public:
    using DeadFlag = std::shared_ptr<const std::atomic<bool>>;

    // `dead` tells that the service has died, which ends every wait. The pool outlives it.
    Recorder(Pool* pool, DeadFlag dead) : m_pool(pool), m_dead(std::move(dead)) {}

    // Waits until `enough` holds for the events so far, for kWait or `limit`. Returns whether.
    bool WaitFor(const std::function<bool(const Events&)>& enough, std::chrono::milliseconds limit);
    Events All();

    // The service's process, known after its first call; 0 before.
    pid_t ServiceProcess() const { return m_process; }

    // Set these before the first request.
    Lend lend = Lend::kBuffers;
    bool refuseMessages = false;                   // answer every notify with an error
    std::function<void(const Event&)> inCallback;  // called in every callback, after recording

    ndk::ScopedAStatus notify(const std::vector<device::NotifyMsg>& messages) override;
    ndk::ScopedAStatus processCaptureResult(
            const std::vector<package::OfflineCaptureResult>& results) override;
    ndk::ScopedAStatus requestStreamBuffers(
            const std::vector<package::OfflineBufferRequest>& requests,
            std::vector<package::OfflineStreamBufferRet>* answers,
            device::BufferRequestStatus* status) override;
    ndk::ScopedAStatus returnStreamBuffers(
            const std::vector<device::StreamBuffer>& buffers) override;

  private:
    void Add(Event event);
    ndk::ScopedAStatus AddEmpty(const char* callback);
    std::vector<device::StreamBuffer> LendFor(const package::OfflineBufferRequest& request,
                                              Event* event);
    bool WasWritten(const BufferMark& returned);

    Pool* const m_pool;
    const DeadFlag m_dead;
    std::atomic<pid_t> m_process{0};
    std::mutex m_lock;  // guards what follows
    std::condition_variable m_changed;
    Events m_events;
    int64_t m_lent = 0;  // ids count from 1, as the test client's do
};

}  // namespace conformance
