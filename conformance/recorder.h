// A client's callback object that writes down what the service tells it.
#pragma once

#include <aidl/vendor/zel/hardware/camera/offlinecamera/BnOfflineCameraCallback.h>

#include <atomic>
#include <chrono>
#include <condition_variable>

#include "buffers.h"
#include "check.h"

namespace conformance {

namespace device = ::aidl::android::hardware::camera::device;
namespace package = ::aidl::vendor::zel::hardware::camera::offlinecamera;
using Clock = std::chrono::steady_clock;

// A buffer as a result or a return names it.
struct BufferMark {
    int32_t stream = 0;
    int64_t id = 0;
    bool good = true;  // status OK; of a returned one: the service has written to it

    bool operator==(const BufferMark& o) const { return stream == o.stream && id == o.id; }
};

struct Event {
    enum Kind { kShutter, kError, kResult, kAsked, kReturned, kEmpty };

    explicit Event(Kind what) : kind(what) {}

    Kind kind;
    Clock::time_point at = Clock::now();
    int32_t frame = -1;               // of kShutter, kError and kResult
    int64_t timestamp = 0;            // of kShutter, in nanoseconds
    std::vector<BufferMark> buffers;  // of kResult the outputs, of kAsked what was lent
    std::vector<BufferMark> inputs;   // of kResult
    int32_t count = 0;                // of kResult the parts of metadata, of kAsked the buffers
    std::vector<uint8_t> metadata;    // of kResult
    Stream stream;                    // of kAsked
    std::vector<std::shared_ptr<ndk::ScopedFileDescriptor>> fences;  // release fences
    const char* callback = "";                                       // of kEmpty
};

using Events = std::vector<Event>;

// How requestStreamBuffers is answered.
enum class Lend {
    kBuffers,       // as asked for, with the status OK
    kOneTooFew,     // one buffer less than asked for
    kEmptyHandles,  // buffers without handles, as the test client gives after a failed allocation
    kErrorValue,    // an error in place of the buffers
    kNoAnswers,     // an empty list
};

// Thread-safe.
class Recorder : public package::BnOfflineCameraCallback {
  public:
    // The pool outlives it.
    explicit Recorder(Pool* pool) : m_pool(pool) {}

    // Waits until `enough` holds for the events so far. Returns whether it did within the limit.
    bool WaitFor(const std::function<bool(const Events&)>& enough, milliseconds limit = kWait);
    Events All();

    // The service's process; 0 before its first call.
    pid_t ServiceProcess() const { return m_process; }

    // Set these before the first request.
    Lend lend = Lend::kBuffers;
    std::function<void(const Event&)> inCallback;  // called in every callback

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
    void Add(const Event& event);
    ndk::ScopedAStatus AddEmpty(const char* callback);
    std::vector<device::StreamBuffer> LendFor(const Stream& stream, Event* event);
    bool WasWritten(const BufferMark& returned);

    Pool* const m_pool;
    std::atomic<pid_t> m_process{0};
    std::atomic<int64_t> m_lent{0};  // ids count from 1, as the test client's do
    std::mutex m_lock;               // guards the events
    std::condition_variable m_changed;
    Events m_events;
};

}  // namespace conformance
