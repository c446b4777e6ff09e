// Wrong behaviour on demand: names, parsing, and what each fault does.
#include "faults.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <utility>

#include "refusal.h"

namespace offlinecamera {

namespace {

using ::aidl::android::hardware::camera::device::BufferRequestStatus;
using ::aidl::vendor::zel::hardware::camera::offlinecamera::OfflineStreamBufferRet;

constexpr services::FaultName kNames[] = {
        {"open-error", "openOfflineSession fails with an error"},
        {"open-null", "openOfflineSession succeeds but gives no session"},
        {"configure-error", "configureOfflineStreams fails with an error"},
        {"process-error", "processOfflineRequest fails with an error"},
        {"die-on-open", "the service is killed inside openOfflineSession"},
        {"die-on-configure", "the service is killed inside configureOfflineStreams"},
        {"die-on-process", "the service is killed inside processOfflineRequest"},
        {"die-after-process",
         "the service is killed after processOfflineRequest, before the shutter"},
        {"no-shutter", "no shutter message, only the result"},
        {"error-notify", "an error message instead of the shutter message"},
        {"shutter-other-frame", "the shutter message names a frame that was not asked for"},
        {"no-result", "no result, only the shutter message"},
        {"late-result", "the result comes late, by default after a client's usual wait of 5 s",
         "milliseconds", 6000, 60000},
        {"result-first", "the result comes before the shutter message"},
        {"early-result", "shutter and result come before processOfflineRequest returns"},
        {"split-result", "the result comes in two pieces: first without buffers, then with them"},
        {"wrong-buffers", "the result names buffers that were not in the request"},
        {"extra-buffer", "the result names one buffer more than the request had"},
        {"reordered-buffers",
         "the result names its buffers in reverse order (shows with several output streams)"},
        {"duplicate-result", "the result comes twice"},
        {"corrupt-metadata", "the result's metadata is cut short"},
        {"empty-callbacks", "every callback is first called with an empty list"},
        {"small-jpeg", "only the top left 320 x 240 pixels are encoded, so that the file is small"},
        {"lend",
         "buffers of the first input stream's shape are borrowed and given back in every mode",
         "buffers", 2, 16},
        {"return-twice", "one buffer is borrowed and given back twice"},
        {"return-unknown", "a buffer is given back that was never borrowed"},
};

// Ids and numbers that no client of this service uses.
constexpr int64_t kForeignBufferId = 0x7eadbeef;
constexpr int32_t kForeignFrameOffset = 1000;

// Enough for the answer of a call to reach a client on a busy machine.
constexpr std::chrono::milliseconds kAnswerTime(300);

// What a "small" file shows: in the worst case far below 262152 bytes.
constexpr uint32_t kSmallWidth = 320;
constexpr uint32_t kSmallHeight = 240;

[[noreturn]] void Die(const char* place) {
    __android_log_print(ANDROID_LOG_WARN, kLogTag, "fault: dying %s", place);
    raise(SIGKILL);
    abort();  // not reached: that signal cannot be blocked
}

// Every callback with an empty list; a client answers with an error.
void CallWithNothing(IOfflineCameraCallback& client) {
    const auto notify = client.notify({});
    const auto result = client.processCaptureResult({});
    std::vector<OfflineStreamBufferRet> answers;
    BufferRequestStatus ignored = BufferRequestStatus::OK;
    const auto request = client.requestStreamBuffers({}, &answers, &ignored);
    const auto giveBack = client.returnStreamBuffers({});
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "fault: empty callbacks answered %s, %s, %s, %s",
                        notify.getDescription().c_str(), result.getDescription().c_str(),
                        request.getDescription().c_str(), giveBack.getDescription().c_str());
}

}  // namespace

FaultInjector::FaultInjector() : FaultSet("", {std::begin(kNames), std::end(kNames)}) {}

ndk::ScopedAStatus FaultInjector::AtCall(const char* operation, const char* die,
                                         const char* error) const {
    if (Has(die)) Die(operation);
    if (Has(error)) return Refuse(operation, kInternal, "fault switched on");
    return ndk::ScopedAStatus::ok();
}

void FaultInjector::BeforeFrame(const SessionClient& client, const Stream& stream,
                                const StopSignal& stop) const {
    if (Has("die-after-process")) {
        stop.WaitFor(kAnswerTime);
        Die("before the shutter");
    }
    if (Has("empty-callbacks")) CallWithNothing(*client.callback);
    if (Has("return-unknown")) {
        ReturnStreamBuffers(*client.callback, stream.id, {kForeignBufferId});
    }
    if (Has("lend") || Has("return-twice")) BorrowAndReturn(client, stream);
}

void FaultInjector::BorrowAndReturn(const SessionClient& client, const Stream& stream) const {
    const int64_t count = Has("lend") ? Argument("lend") : 1;
    const auto borrowed = BorrowedBuffers::Borrow(client, stream, static_cast<int32_t>(count));
    if (!borrowed.Ok()) return LogProblem("fault lend: " + borrowed.Error());
    if (Has("return-twice")) {
        ReturnStreamBuffers(*client.callback, stream.id, borrowed.Value().Ids());
    }
}

bool FaultInjector::AlterMessage(NotifyMsg* message) const {
    if (message->getTag() == NotifyMsg::shutter) {
        auto& shutter = message->get<NotifyMsg::shutter>();
        if (Has("shutter-other-frame")) shutter.frameNumber += kForeignFrameOffset;
        if (Has("error-notify")) *message = MakeError(shutter.frameNumber);
    }
    return !Has("no-shutter");
}

OfflineCaptureResult FaultInjector::MakeOneResult(const Request& request,
                                                  BufferStatus status) const {
    OfflineCaptureResult result = MakeResult(request, status);
    auto& buffers = result.outFrameInfo.buffers;
    if (Has("wrong-buffers")) {
        for (StreamBuffer& buffer : buffers) buffer.bufferId += kForeignBufferId;
    }
    if (Has("extra-buffer")) {
        StreamBuffer extra;
        extra.streamId = buffers.back().streamId;
        extra.bufferId = kForeignBufferId;
        buffers.push_back(std::move(extra));
    }
    if (Has("reordered-buffers")) std::reverse(buffers.begin(), buffers.end());
    auto& metadata = result.outFrameInfo.metadata;
    if (Has("corrupt-metadata") && !metadata.empty()) metadata.pop_back();
    return result;
}

std::vector<OfflineCaptureResult> FaultInjector::MakeResults(const Request& request,
                                                             BufferStatus status,
                                                             const StopSignal& stop) const {
    if (Has("late-result")) {
        stop.WaitFor(std::chrono::milliseconds(Argument("late-result")));
    }
    std::vector<OfflineCaptureResult> results;
    if (Has("no-result")) return results;
    if (Has("split-result")) {
        results.push_back(MakeOneResult(request, status));
        results[0].outFrameInfo.buffers.clear();
        results[0].inFrameInfo.buffers.clear();
    }
    results.push_back(MakeOneResult(request, status));
    if (Has("duplicate-result")) results.push_back(MakeOneResult(request, status));
    return results;
}

void FaultInjector::ShrinkPicture(imaging::Nv12View* picture) const {
    if (!Has("small-jpeg")) return;
    picture->width = std::min(picture->width, kSmallWidth);
    picture->height = std::min(picture->height, kSmallHeight);
}

}  // namespace offlinecamera
