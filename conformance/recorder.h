// A client's callback object that writes down what the service tells it. Thread-safe.
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

    Kind kind;
    const char* callback = "";  // of kEmpty
    Clock::time_point at = Clock::now();
    int32_t frame = -1;                    // of kShutter, kError and kResult
    int64_t timestamp = 0;                 // of kShutter, in nanoseconds
    int32_t count = 0;                     // of kResult: the parts of metadata
    std::vector<uint8_t> metadata = {};    // of kResult
    std::vector<BufferMark> buffers = {};  // of kResult the outputs, of kAsked what was lent
    std::vector<std::shared_ptr<ndk::ScopedFileDescriptor>> fences = {};  // release fences
};

using Events = std::vector<Event>;

// The events of one kind, and of one frame unless it is -1.
Events Of(const Events& events, Event::Kind kind, int32_t frame = -1);
std::vector<BufferMark> BuffersOf(const Events& events);
// Whether an error message or a broken buffer tells that the frame failed.
bool Failed(const Events& events, int32_t frame);
bool FencesSignal(const Events& events);  // all of them, within kWait
std::string Text(const BufferMark& buffer);
std::string Text(const Events& events);

// How requestStreamBuffers is answered.
enum class Lend {
    kBuffers,       // as asked for, with the status OK
    kOneTooFew,     // one buffer less than asked for
    kEmptyHandles,  // buffers without handles, as the test client gives after a failed allocation
    kErrorValue,    // an error in place of the buffers
    kNoAnswers,     // an empty list
};

class Recorder : public package::BnOfflineCameraCallback {
  public:
    explicit Recorder(Pool* pool) : m_pool(pool) {}  // which outlives it

    // Waits until `enough` holds for the events so far. Returns whether it did within the limit.
    bool WaitFor(const std::function<bool(const Events&)>& enough, milliseconds limit = kWait);
    Events All();

    static inline std::atomic<pid_t> s_service = 0;  // the process of the last call

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
    ndk::ScopedAStatus Refuse(const char* callback);
    std::vector<device::StreamBuffer> LendFor(const package::OfflineBufferRequest& request,
                                              Event* event);
    bool WasWritten(int64_t id);

    Pool* const m_pool;
    std::mutex m_lock;  // guards what follows
    std::condition_variable m_changed;
    Events m_events;
    std::vector<Buffer*> m_lent;  // the ids count from 1, as the test client's do
};

}  // namespace conformance
