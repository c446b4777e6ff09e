// Records callbacks and lends buffers.
#include "recorder.h"

#include <algorithm>

namespace conformance {

namespace {

using device::NotifyMsg;
using device::StreamBuffer;
using device::StreamBuffersVal;
using ndk::ScopedAStatus;

constexpr int32_t kIllegalArgument = 1;  // as the test client answers
constexpr size_t kFirstLent = 100;       // numbers in the pool, beside those of requests' buffers
constexpr uint8_t kLentFill = 0x3c;

std::vector<BufferMark> MarksOf(const std::vector<StreamBuffer>& buffers, Event* event) {
    std::vector<BufferMark> marks;
    for (const StreamBuffer& buffer : buffers) {
        const bool good = buffer.status == device::BufferStatus::OK;
        marks.push_back({buffer.streamId, buffer.bufferId, good});
        for (const auto& fence : buffer.releaseFence.fds) {
            event->fences.push_back(std::make_shared<ndk::ScopedFileDescriptor>(fence.dup()));
        }
    }
    return marks;
}

ScopedAStatus StatusOf(bool ok) {
    return ok ? ScopedAStatus::ok() : ScopedAStatus::fromServiceSpecificError(kIllegalArgument);
}

}  // namespace

void Recorder::Add(const Event& event) {
    m_process = AIBinder_getCallingPid();
    {
        const std::lock_guard<std::mutex> guard(m_lock);
        m_events.push_back(event);
        m_changed.notify_all();
    }
    if (inCallback) inCallback(event);
}

ScopedAStatus Recorder::AddEmpty(const char* callback) {
    Event event(Event::kEmpty);
    event.callback = callback;
    Add(event);
    return StatusOf(false);
}

bool Recorder::WaitFor(const std::function<bool(const Events&)>& enough, milliseconds limit) {
    std::unique_lock<std::mutex> guard(m_lock);
    return m_changed.wait_for(guard, limit, [&] { return enough(m_events); });
}

Events Recorder::All() {
    const std::lock_guard<std::mutex> guard(m_lock);
    return m_events;
}

ScopedAStatus Recorder::notify(const std::vector<NotifyMsg>& messages) {
    if (messages.empty()) return AddEmpty("notify");
    for (const NotifyMsg& message : messages) {
        const bool shutter = message.getTag() == NotifyMsg::shutter;
        Event event(shutter ? Event::kShutter : Event::kError);
        event.frame = shutter ? message.get<NotifyMsg::shutter>().frameNumber
                              : message.get<NotifyMsg::error>().frameNumber;
        if (shutter) event.timestamp = message.get<NotifyMsg::shutter>().timestamp;
        Add(event);
    }
    return StatusOf(true);
}

ScopedAStatus Recorder::processCaptureResult(
        const std::vector<package::OfflineCaptureResult>& results) {
    if (results.empty()) return AddEmpty("processCaptureResult");
    for (const auto& result : results) {
        Event event(Event::kResult);
        event.frame = result.frameNumber;
        event.buffers = MarksOf(result.outFrameInfo.buffers, &event);
        event.inputs = MarksOf(result.inFrameInfo.buffers, &event);
        event.count = result.outFrameInfo.numPartialMetadata;
        event.metadata = result.outFrameInfo.metadata;
        Add(event);
    }
    return StatusOf(true);
}

std::vector<StreamBuffer> Recorder::LendFor(const Stream& stream, Event* event) {
    const int32_t less = lend == Lend::kOneTooFew ? 1 : 0;
    std::vector<StreamBuffer> buffers(static_cast<size_t>(std::clamp(event->count - less, 0, 64)));
    for (StreamBuffer& buffer : buffers) {
        buffer.streamId = stream.id;
        buffer.bufferId = ++m_lent;
        if (lend != Lend::kEmptyHandles) {
            Buffer& memory = m_pool->Get(stream, kFirstLent + event->buffers.size());
            memory.Fill(kLentFill);
            buffer.buffer = memory.Handle();
        }
        event->buffers.push_back({buffer.streamId, buffer.bufferId});
    }
    return buffers;
}

ScopedAStatus Recorder::requestStreamBuffers(
        const std::vector<package::OfflineBufferRequest>& requests,
        std::vector<package::OfflineStreamBufferRet>* answers,
        device::BufferRequestStatus* status) {
    if (requests.empty()) return AddEmpty("requestStreamBuffers");
    const bool good = lend == Lend::kBuffers || lend == Lend::kEmptyHandles;
    *status = good ? device::BufferRequestStatus::OK : device::BufferRequestStatus::FAILED_UNKNOWN;
    for (const auto& request : requests) {
        Event event(Event::kAsked);
        event.stream = request.stream;
        event.count = request.numBuffersRequested;
        package::OfflineStreamBufferRet answer;  // an error, to begin with
        answer.stream = request.stream;
        if (lend < Lend::kErrorValue) {
            answer.val = StreamBuffersVal::make<StreamBuffersVal::buffers>(
                    LendFor(request.stream, &event));
        }
        if (lend != Lend::kNoAnswers) answers->push_back(std::move(answer));
        Add(event);
    }
    return StatusOf(true);
}

// Whether a lent buffer's content has changed; true for one that was never lent.
bool Recorder::WasWritten(const BufferMark& returned) {
    bool written = true;
    for (const Event& event : All()) {
        for (size_t i = 0; event.kind == Event::kAsked && i < event.buffers.size(); ++i) {
            if (!(event.buffers[i] == returned)) continue;
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
    Event event(Event::kReturned);
    event.buffers = MarksOf(buffers, &event);
    for (BufferMark& buffer : event.buffers) buffer.good = WasWritten(buffer);
    Add(event);
    return StatusOf(true);
}

}  // namespace conformance
