// Wrong behaviour on demand: names, and what each fault does.
#include "faults.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <mutex>
#include <utility>

#include "refusal.h"

namespace offlinecamera::faults {

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
        {"keep-lent", "borrowed buffers are never given back"},
        {"silent-without-buffers", "a frame ends without a word where buffers are not lent"},
        {"wrong-interface", "the registered object has another interface"},
        {"empty-object", "the registered object knows no operation"},
        {"take-null", "registerClient and openOfflineSession take a null callback"},
        {"register-error", "registerClient fails with an error"},
        {"die-on-modes", "the service is killed inside getSupportedOpModes"},
        {"die-on-unregister", "the service is killed inside unregisterClient"},
        {"newest-client-only", "every session calls the client of the newest one"},
        {"die-with-client", "the service is killed when a client dies"},
        {"close-error", "closeOfflineSession fails with an error"},
        {"close-nothing", "closeOfflineSession succeeds, and the session goes on"},
        {"close-waits", "closeOfflineSession waits for all frames, also for a client's callback"},
        {"die-on-second-close", "the service is killed when a session is closed again"},
        {"keep-dead", "sessions of clients that died go on"},
        {"leak-sessions", "each session leaves a descriptor behind"},
        {"leak-refused", "each refused request leaves a descriptor behind"},
        {"take-any-streams", "configureOfflineStreams succeeds whatever the streams are"},
        {"refuse-jpeg", "configureOfflineStreams refuses Y2J, which is listed"},
        {"refuse-mmf", "configureOfflineStreams refuses MMF, which is listed"},
        {"configure-once", "a session takes streams once only"},
        {"drop-in-flight", "new streams drop the frames in flight without a word"},
        {"same-number", "every request gets the frame number 1"},
        {"restart-numbers", "new streams start the frame numbers of all sessions again"},
        {"stuck-timestamp", "all shutter messages carry the same time"},
        {"result-other-frame", "the result names a frame that was not asked for"},
        {"no-buffers", "the result names no output buffers"},
        {"first-output-only", "the result names the first output buffer only"},
        {"broken-buffers", "the result's output buffers have the status ERROR"},
        {"partial-count", "the result states three parts of metadata, and one comes"},
        {"silent-refusal", "a wrong request is taken, and nothing comes of it"},
        {"need-metadata", "a request without metadata is taken, and nothing comes of it"},
        {"first-request-only", "the other requests of a call are dropped"},
        {"short-queue", "requests are dropped while two frames are in flight"},
        {"short-picture", "the last two rows of a picture are left out"},
        {"write-padding", "the first byte after a picture's first row is written"},
        {"same-picture", "all pictures are grey, whatever the input"},
        {"write-after-result", "the picture changes after its result"},
        {"no-trailer", "a JPEG buffer has no trailer"},
        {"long-size", "a JPEG buffer's trailer states 100 bytes too many"},
        {"ignore-fences", "acquire fences are not waited for"},
        {"fence-in-call", "processOfflineRequest waits for acquire fences, up to 20 s"},
        {"stuck-fence", "the result carries a release fence that is never signalled"},
};

// Ids and numbers that no client of this service uses.
constexpr int64_t kForeignBufferId = 0x7eadbeef;
constexpr int32_t kForeignFrameOffset = 1000;

// Enough for the answer of a call to reach a client on a busy machine.
constexpr std::chrono::milliseconds kAnswerTime(300);

// Enough for a client to look at a picture.
constexpr std::chrono::milliseconds kLookTime(500);

// What a "small" file shows: in the worst case far below 262152 bytes.
constexpr uint32_t kSmallWidth = 320;
constexpr uint32_t kSmallHeight = 240;

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

void BorrowAndReturn(const Client& client, const Stream& stream) {
    const int64_t count = Has("lend") ? Set().Argument("lend") : 1;
    const auto borrowed = BorrowedBuffers::Borrow(client, stream, static_cast<int32_t>(count));
    if (!borrowed.Ok()) return LogProblem("fault lend: " + borrowed.Error());
    if (Has("return-twice")) ReturnStreamBuffers(*client, stream.id, borrowed.Value().Ids());
}

OfflineCaptureResult MakeOneResult(const Request& request, BufferStatus status) {
    OfflineCaptureResult result = MakeResult(request, status);
    auto& buffers = result.outFrameInfo.buffers;
    if (Has("extra-buffer")) {
        StreamBuffer extra;
        extra.streamId = buffers.back().streamId;
        extra.bufferId = kForeignBufferId;
        buffers.push_back(std::move(extra));
    }
    if (Has("reordered-buffers")) std::reverse(buffers.begin(), buffers.end());
    if (Has("no-buffers")) buffers.clear();
    if (Has("first-output-only")) buffers.resize(1);
    for (StreamBuffer& buffer : buffers) {
        if (Has("wrong-buffers")) buffer.bufferId += kForeignBufferId;
        if (Has("broken-buffers")) buffer.status = BufferStatus::ERROR;
        if (Has("stuck-fence")) buffer.releaseFence.fds.emplace_back(eventfd(0, EFD_CLOEXEC));
    }
    if (Has("result-other-frame")) result.frameNumber += kForeignFrameOffset;
    if (Has("partial-count")) result.outFrameInfo.numPartialMetadata = 3;
    auto& metadata = result.outFrameInfo.metadata;
    if (Has("corrupt-metadata") && !metadata.empty()) metadata.pop_back();
    return result;
}

}  // namespace

services::FaultSet& Set() {
    static services::FaultSet* const set =
            new services::FaultSet("", {std::begin(kNames), std::end(kNames)});
    return *set;
}

void DieAt(const char* place, const std::string& fault) {
    if (!Has(fault)) return;
    __android_log_print(ANDROID_LOG_WARN, kLogTag, "fault: dying %s", place);
    raise(SIGKILL);
}

ndk::ScopedAStatus AtCall(const char* operation, const std::string& name) {
    DieAt(operation, "die-on-" + name);
    if (Has(name + "-error")) return Refuse(operation, kInternal, "fault switched on");
    return ndk::ScopedAStatus::ok();
}

void BeforeFrame(const Client& client, const Stream& stream, const StopSignal& stop) {
    if (Has("die-after-process")) stop.WaitFor(kAnswerTime);
    DieAt("before the shutter", "die-after-process");
    if (Has("empty-callbacks")) CallWithNothing(*client);
    if (Has("return-unknown")) ReturnStreamBuffers(*client, stream.id, {kForeignBufferId});
    if (Has("lend") || Has("return-twice")) BorrowAndReturn(client, stream);
}

bool AlterMessage(NotifyMsg* message) {
    if (message->getTag() == NotifyMsg::shutter) {
        auto& shutter = message->get<NotifyMsg::shutter>();
        if (Has("stuck-timestamp")) shutter.timestamp = 1;
        if (Has("shutter-other-frame")) shutter.frameNumber += kForeignFrameOffset;
        if (Has("error-notify")) *message = MakeError(shutter.frameNumber);
    }
    return !Has("no-shutter");
}

std::vector<OfflineCaptureResult> MakeResults(const Request& request, BufferStatus status,
                                              const StopSignal& stop) {
    if (Has("late-result")) {
        stop.WaitFor(std::chrono::milliseconds(Set().Argument("late-result")));
    }
    std::vector<OfflineCaptureResult> results;
    if (Has("no-result")) return results;
    if (Has("split-result")) {
        results.push_back(MakeOneResult(request, status));
        results[0].outFrameInfo.buffers.clear();
        results[0].inFrameInfo.buffers.clear();
    }
    results.push_back(MakeOneResult(request, status));
    if (Has("split-result")) results[1].outFrameInfo.metadata.clear();
    if (Has("duplicate-result")) results.push_back(MakeOneResult(request, status));
    return results;
}

void SpoilPicture(const imaging::MutableNv12View& picture) {
    if (Has("write-padding")) picture.y[picture.width] = 1;
    for (uint32_t y = 0; Has("same-picture") && y < picture.height; ++y) {
        memset(picture.y + y * picture.strideBytes, 128, picture.width);
        memset(picture.uv + y / 2 * picture.strideBytes, 128, picture.width);
    }
}

void SpoilLater(const Request& request, const StopSignal& stop) {
    if (!Has("write-after-result")) return;
    stop.WaitFor(kLookTime);
    const auto output = LockedBuffer::Lock(request.outputs[0].buffer, Access::kWrite);
    if (output.Ok()) ++*output.Value().Data();
}

void DropFences(Request* request) {
    if (!Has("ignore-fences")) return;
    for (auto& frame : request->inputs) {
        for (RequestBuffer& input : frame) input.buffer.DropFence();
    }
    for (RequestBuffer& output : request->outputs) output.buffer.DropFence();
}

void AwaitFences(const OfflineRequestInfo& info) {
    for (const auto& frame : info.inFrameInfos) {
        for (const StreamBuffer& buffer : frame.buffers) {
            if (!Has("fence-in-call") || buffer.acquireFence.fds.empty()) continue;
            pollfd wait = {buffer.acquireFence.fds[0].get(), POLLIN, 0};
            poll(&wait, 1, 20'000);
        }
    }
}

void Leak(const char* fault) {
    if (Has(fault)) (void)!dup(STDERR_FILENO);
}

Client ClientOf(const Client& client, bool opened) {
    static std::mutex s_lock;
    static Client s_newest;
    const std::lock_guard<std::mutex> guard(s_lock);
    if (!Has("newest-client-only")) return client;
    if (opened) s_newest = client;
    return s_newest;
}

void ShrinkPicture(imaging::Nv12View* picture) {
    if (!Has("small-jpeg")) return;
    picture->width = std::min(picture->width, kSmallWidth);
    picture->height = std::min(picture->height, kSmallHeight);
}

}  // namespace offlinecamera::faults
