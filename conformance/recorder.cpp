// Records callbacks, lends buffers, and finds events.
#include "recorder.h"

#include <poll.h>

#include <algorithm>

namespace conformance {

namespace {

using device::NotifyMsg;
using device::StreamBuffer;
using device::StreamBuffersVal;
using ndk::ScopedAStatus;

constexpr size_t kFirstLent = 100;  // numbers in the pool, beside those of requests' buffers
constexpr uint8_t kLentFill = 0x3c;

// Takes down the buffers and their release fences.
void Take(const std::vector<StreamBuffer>& buffers, Event* event) {
    for (const StreamBuffer& buffer : buffers) {
        const bool good = buffer.status == device::BufferStatus::OK;
        event->buffers.push_back({buffer.streamId, buffer.bufferId, good});
        for (const auto& fence : buffer.releaseFence.fds) {
            event->fences.push_back(std::make_shared<ndk::ScopedFileDescriptor>(fence.dup()));
        }
    }
}

}  // namespace

void Recorder::Add(const Event& event) {
    s_service = AIBinder_getCallingPid();
    {
        const std::lock_guard<std::mutex> guard(m_lock);
        m_events.push_back(event);
        m_changed.notify_all();
    }
    if (inCallback) inCallback(event);
}

// Of an empty list, as the test client does.
ScopedAStatus Recorder::Refuse(const char* callback) {
    Add({Event::kEmpty, callback});
    return ScopedAStatus::fromServiceSpecificError(1);
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
    if (messages.empty()) return Refuse("notify");
    for (const NotifyMsg& message : messages) {
        const bool shutter = message.getTag() == NotifyMsg::shutter;
        Event event = {shutter ? Event::kShutter : Event::kError};
        event.frame = shutter ? message.get<NotifyMsg::shutter>().frameNumber
                              : message.get<NotifyMsg::error>().frameNumber;
        if (shutter) event.timestamp = message.get<NotifyMsg::shutter>().timestamp;
        Add(event);
    }
    return ScopedAStatus::ok();
}

ScopedAStatus Recorder::processCaptureResult(
        const std::vector<package::OfflineCaptureResult>& results) {
    if (results.empty()) return Refuse("processCaptureResult");
    for (const auto& result : results) {
        Event event = {Event::kResult};
        event.frame = result.frameNumber;
        Take(result.inFrameInfo.buffers, &event);
        event.buffers.clear();  // of the inputs only the fences count
        Take(result.outFrameInfo.buffers, &event);
        event.count = result.outFrameInfo.numPartialMetadata;
        event.metadata = result.outFrameInfo.metadata;
        Add(event);
    }
    return ScopedAStatus::ok();
}

std::vector<StreamBuffer> Recorder::LendFor(const package::OfflineBufferRequest& request,
                                            Event* event) {
    const std::lock_guard<std::mutex> guard(m_lock);
    const int32_t count = request.numBuffersRequested - (lend == Lend::kOneTooFew ? 1 : 0);
    std::vector<StreamBuffer> buffers(static_cast<size_t>(std::clamp(count, 0, 64)));
    for (StreamBuffer& buffer : buffers) {
        Buffer& memory = m_pool->Get(request.stream, kFirstLent + event->buffers.size());
        memory.Fill(kLentFill);
        m_lent.push_back(&memory);
        buffer.streamId = request.stream.id;
        buffer.bufferId = static_cast<int64_t>(m_lent.size());
        if (lend != Lend::kEmptyHandles) buffer.buffer = memory.Handle();
        event->buffers.push_back({buffer.streamId, buffer.bufferId});
    }
    return buffers;
}

ScopedAStatus Recorder::requestStreamBuffers(
        const std::vector<package::OfflineBufferRequest>& requests,
        std::vector<package::OfflineStreamBufferRet>* answers,
        device::BufferRequestStatus* status) {
    if (requests.empty()) return Refuse("requestStreamBuffers");
    const bool good = lend == Lend::kBuffers || lend == Lend::kEmptyHandles;
    *status = good ? device::BufferRequestStatus::OK : device::BufferRequestStatus::FAILED_UNKNOWN;
    for (const auto& request : requests) {
        Event event = {Event::kAsked};
        package::OfflineStreamBufferRet answer;  // an error, to begin with
        answer.stream = request.stream;
        if (lend < Lend::kErrorValue) {
            answer.val =
                    StreamBuffersVal::make<StreamBuffersVal::buffers>(LendFor(request, &event));
        }
        if (lend != Lend::kNoAnswers) answers->push_back(std::move(answer));
        Add(event);
    }
    return ScopedAStatus::ok();
}

// Whether a lent buffer's content has changed; true for one that was never lent.
bool Recorder::WasWritten(int64_t id) {
    const std::lock_guard<std::mutex> guard(m_lock);
    if (id < 1 || id > static_cast<int64_t>(m_lent.size())) return true;
    const std::vector<uint8_t> bytes = m_lent[static_cast<size_t>(id - 1)]->Copy();
    return bytes != std::vector<uint8_t>(bytes.size(), kLentFill);
}

ScopedAStatus Recorder::returnStreamBuffers(const std::vector<StreamBuffer>& buffers) {
    if (buffers.empty()) return Refuse("returnStreamBuffers");
    Event event = {Event::kReturned};
    Take(buffers, &event);
    for (BufferMark& buffer : event.buffers) buffer.good = WasWritten(buffer.id);
    Add(event);
    return ScopedAStatus::ok();
}

Events Of(const Events& events, Event::Kind kind, int32_t frame) {
    Events found;
    for (const Event& event : events) {
        const bool wanted = frame == -1 || event.frame == frame;
        if (wanted && event.kind == kind) found.push_back(event);
    }
    return found;
}

std::vector<BufferMark> BuffersOf(const Events& events) {
    std::vector<BufferMark> buffers;
    for (const Event& event : events) {
        buffers.insert(buffers.end(), event.buffers.begin(), event.buffers.end());
    }
    return buffers;
}

bool Failed(const Events& events, int32_t frame) {
    const auto buffers = BuffersOf(Of(events, Event::kResult, frame));
    return !Of(events, Event::kError, frame).empty() ||
           !std::all_of(buffers.begin(), buffers.end(), [](const auto& mark) { return mark.good; });
}

bool FencesSignal(const Events& events) {
    for (const Event& event : events) {
        for (const auto& fence : event.fences) {
            pollfd wait = {fence->get(), POLLIN, 0};
            if (poll(&wait, 1, static_cast<int>(kWait.count())) != 1) return false;
        }
    }
    return true;
}

std::string Text(const BufferMark& buffer) {
    return Say("stream ", buffer.stream, " buffer ", buffer.id);
}

std::string Text(const Events& events) {
    constexpr const char* kNames[] = {"shutter",           "error",    "result",
                                      "asked for buffers", "returned", "empty "};
    std::string text;
    for (const Event& event : events) {
        text += (text.empty() ? "" : ", ") + std::string(kNames[event.kind]) + event.callback;
        if (event.kind <= Event::kResult) text += Say(" ", event.frame);
        for (const BufferMark& buffer : event.buffers) text += Say(" (", Text(buffer), ")");
    }
    return text.empty() ? "nothing" : text;
}

}  // namespace conformance
