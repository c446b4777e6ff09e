// Records callbacks and lends buffers.
#include "recorder.h"

#include <algorithm>

#include "check.h"

namespace conformance {

namespace {

using ::aidl::android::hardware::camera::device::BufferRequestStatus;
using ::aidl::android::hardware::camera::device::BufferStatus;
using ::aidl::android::hardware::camera::device::NotifyMsg;
using ::aidl::android::hardware::camera::device::StreamBuffer;
using ::aidl::android::hardware::camera::device::StreamBufferRequestError;
using ::aidl::android::hardware::camera::device::StreamBuffersVal;
using ::aidl::vendor::zel::hardware::camera::offlinecamera::OfflineStreamBufferRet;
using ndk::ScopedAStatus;

constexpr int32_t kIllegalArgument = 1;  // as the test client answers
constexpr int32_t kMostLent = 64;
constexpr size_t kFirstLent = 100;  // numbers in the pool, beside those of requests' buffers
constexpr uint8_t kLentFill = 0x3c;

std::vector<BufferMark> Marks(const std::vector<StreamBuffer>& buffers, Event* event) {
    std::vector<BufferMark> marks;
    for (const StreamBuffer& buffer : buffers) {
        marks.push_back({buffer.streamId, buffer.bufferId, buffer.status == BufferStatus::OK});
        for (const auto& fence : buffer.releaseFence.fds) {
            event->fences.push_back(std::make_shared<ndk::ScopedFileDescriptor>(fence.dup()));
        }
    }
    return marks;
}

}  // namespace

std::string Text(const BufferMark& buffer) {
    return Say("stream ", buffer.stream, " buffer ", buffer.id);
}

void Recorder::Add(Event event) {
    m_process = AIBinder_getCallingPid();
    const Event copy = event;
    {
        const std::lock_guard<std::mutex> guard(m_lock);
        m_events.push_back(std::move(event));
        m_changed.notify_all();
    }
    if (inCallback) inCallback(copy);
}

ScopedAStatus Recorder::AddEmpty(const char* callback) {
    Event event{Event::kEmpty};
    event.callback = callback;
    Add(std::move(event));
    return ScopedAStatus::fromServiceSpecificErrorWithMessage(kIllegalArgument, "ILLEGAL_ARGUMENT");
}

bool Recorder::WaitFor(const std::function<bool(const Events&)>& enough,
                       std::chrono::milliseconds limit) {
    constexpr std::chrono::milliseconds kLookForDeath(50);
    const auto deadline = Clock::now() + limit;
    std::unique_lock<std::mutex> guard(m_lock);
    while (!enough(m_events)) {
        const auto now = Clock::now();
        if (now >= deadline || *m_dead) return false;
        m_changed.wait_until(guard, std::min<Clock::time_point>(deadline, now + kLookForDeath));
    }
    return true;
}

Events Recorder::All() {
    const std::lock_guard<std::mutex> guard(m_lock);
    return m_events;
}

ScopedAStatus Recorder::notify(const std::vector<NotifyMsg>& messages) {
    if (messages.empty()) return AddEmpty("notify");
    for (const NotifyMsg& message : messages) {
        Event event{Event::kShutter};
        if (message.getTag() == NotifyMsg::shutter) {
            event.frame = message.get<NotifyMsg::shutter>().frameNumber;
            event.timestamp = message.get<NotifyMsg::shutter>().timestamp;
        } else {
            event.kind = Event::kError;
            event.frame = message.get<NotifyMsg::error>().frameNumber;
        }
        Add(std::move(event));
    }
    return refuseMessages ? ScopedAStatus::fromServiceSpecificError(kIllegalArgument)
                          : ScopedAStatus::ok();
}

ScopedAStatus Recorder::processCaptureResult(
        const std::vector<package::OfflineCaptureResult>& results) {
    if (results.empty()) return AddEmpty("processCaptureResult");
    for (const auto& result : results) {
        Event event{Event::kResult};
        event.frame = result.frameNumber;
        event.buffers = Marks(result.outFrameInfo.buffers, &event);
        event.inputs = Marks(result.inFrameInfo.buffers, &event);
        event.partial = result.outFrameInfo.numPartialMetadata;
        event.metadata = result.outFrameInfo.metadata;
        Add(std::move(event));
    }
    return ScopedAStatus::ok();
}

std::vector<StreamBuffer> Recorder::LendFor(const package::OfflineBufferRequest& request,
                                            Event* event) {
    const int32_t less = lend == Lend::kOneTooFew ? 1 : 0;
    const int32_t count = std::clamp(request.numBuffersRequested - less, 0, kMostLent);
    std::vector<StreamBuffer> buffers(static_cast<size_t>(count));
    for (size_t i = 0; i < buffers.size(); ++i) {
        buffers[i].streamId = request.stream.id;
        {
            const std::lock_guard<std::mutex> guard(m_lock);
            buffers[i].bufferId = ++m_lent;
        }
        if (lend != Lend::kEmptyHandles) {
            Buffer& buffer = m_pool->Get(request.stream, kFirstLent + i);
            buffer.Fill(kLentFill);
            buffers[i].buffer = buffer.Handle();
        }
        event->buffers.push_back({buffers[i].streamId, buffers[i].bufferId});
    }
    return buffers;
}

ScopedAStatus Recorder::requestStreamBuffers(
        const std::vector<package::OfflineBufferRequest>& requests,
        std::vector<OfflineStreamBufferRet>* answers, BufferRequestStatus* status) {
    if (requests.empty()) return AddEmpty("requestStreamBuffers");
    const bool gives =
            lend != Lend::kNoAnswers && lend != Lend::kErrorValue && lend != Lend::kRefused;
    *status = gives && lend != Lend::kOddStatus ? BufferRequestStatus::OK
                                                : BufferRequestStatus::FAILED_UNKNOWN;
    for (const auto& request : requests) {
        Event event{Event::kAsked};
        event.stream = request.stream;
        event.count = request.numBuffersRequested;
        OfflineStreamBufferRet answer;
        answer.stream = request.stream;
        if (gives) {
            answer.val =
                    StreamBuffersVal::make<StreamBuffersVal::buffers>(LendFor(request, &event));
        } else {
            answer.val = StreamBuffersVal::make<StreamBuffersVal::error>(
                    StreamBufferRequestError::NO_BUFFER_AVAILABLE);
        }
        if (lend != Lend::kNoAnswers) answers->push_back(std::move(answer));
        Add(std::move(event));
    }
    return lend == Lend::kRefused ? ScopedAStatus::fromServiceSpecificError(kIllegalArgument)
                                  : ScopedAStatus::ok();
}

// Whether a lent buffer's content has changed; true for one that was never lent.
bool Recorder::WasWritten(const BufferMark& returned) {
    bool written = true;
    for (const Event& event : All()) {
        for (size_t i = 0; event.kind == Event::kAsked && i < event.buffers.size(); ++i) {
            if (!event.buffers[i].Same(returned)) continue;
            Buffer& buffer = m_pool->Get(event.stream, kFirstLent + i);
            buffer.Access([&](const uint8_t* bytes) {
                written = std::any_of(bytes, bytes + buffer.Size(),
                                      [](uint8_t byte) { return byte != kLentFill; });
            });
        }
    }
    return written;
}

ScopedAStatus Recorder::returnStreamBuffers(const std::vector<StreamBuffer>& buffers) {
    if (buffers.empty()) return AddEmpty("returnStreamBuffers");
    Event event{Event::kReturned};
    event.buffers = Marks(buffers, &event);
    for (BufferMark& buffer : event.buffers) buffer.good = WasWritten(buffer);
    Add(std::move(event));
    return ScopedAStatus::ok();
}

}  // namespace conformance
