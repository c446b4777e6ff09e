// Wrong behaviour on demand: parsing, and what each fault does.
#include "faults.h"

#include <android/log.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <utility>

#include "borrowed_buffers.h"
#include "refusal.h"

namespace offlinecamera {

namespace {

using ::aidl::android::hardware::camera::device::BufferRequestStatus;
using ::aidl::android::hardware::camera::device::ErrorCode;
using ::aidl::android::hardware::camera::device::ErrorMsg;
using ::aidl::vendor::zel::hardware::camera::offlinecamera::OfflineStreamBufferRet;

// Ids and numbers that no client of this service uses.
constexpr int64_t kForeignBufferId = 0x7eadbeef;
constexpr int32_t kForeignFrameOffset = 1000;

// Enough for the answer of a call to reach a client on a busy machine.
constexpr std::chrono::milliseconds kAnswerTime(300);

// What a "small" file shows: in the worst case far below 262152 bytes.
constexpr uint32_t kSmallWidth = 320;
constexpr uint32_t kSmallHeight = 240;

const FaultName* FindFault(const std::string& name) {
    for (const FaultName& fault : kFaultNames) {
        if (name == fault.name) return &fault;
    }
    return nullptr;
}

[[noreturn]] void Die(const char* place) {
    __android_log_print(ANDROID_LOG_WARN, kLogTag, "fault: dying %s", place);
    raise(SIGKILL);
    abort();  // not reached: nobody can block that signal
}

/** Every callback with an empty list; a client answers with an error. */
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

/** The same result again; its buffers carry no handles, so their numbers are all there is. */
OfflineCaptureResult CopyResult(const OfflineCaptureResult& from) {
    const auto copyFrame = [](const auto& source, auto* target) {
        target->numPartialMetadata = source.numPartialMetadata;
        target->metadata = source.metadata;
        target->buffers.resize(source.buffers.size());
        for (size_t i = 0; i < source.buffers.size(); ++i) {
            target->buffers[i].streamId = source.buffers[i].streamId;
            target->buffers[i].bufferId = source.buffers[i].bufferId;
            target->buffers[i].status = source.buffers[i].status;
        }
    };
    OfflineCaptureResult to;
    to.frameNumber = from.frameNumber;
    copyFrame(from.outFrameInfo, &to.outFrameInfo);
    copyFrame(from.inFrameInfo, &to.inFrameInfo);
    return to;
}

void AddForeignBuffer(std::vector<StreamBuffer>* buffers) {
    StreamBuffer extra;
    extra.streamId = buffers->empty() ? 0 : buffers->back().streamId;
    extra.bufferId = kForeignBufferId;
    buffers->push_back(std::move(extra));
}

}  // namespace

std::string FaultInjector::Add(const std::string& text) {
    const size_t equals = text.find('=');
    const std::string name = text.substr(0, equals);
    const FaultName* fault = FindFault(name);
    if (fault == nullptr) return "unknown fault '" + name + "': 'help' lists them";
    int64_t argument = fault->defaultArgument;
    if (equals != std::string::npos) {
        if (fault->argument == nullptr) return "fault '" + name + "' takes no argument";
        const std::string number = text.substr(equals + 1);
        char* end = nullptr;
        errno = 0;
        argument = strtoll(number.c_str(), &end, 10);
        if (number.empty() || *end != '\0' || errno != 0 || argument < 1 ||
            argument > fault->maxArgument) {
            return "fault '" + name + "': '" + number + "' is no number of " + fault->argument +
                   " from 1 to " + std::to_string(fault->maxArgument);
        }
    }
    mArguments[fault->fault] = argument;
    return {};
}

std::string FaultInjector::Help() {
    std::string help;
    for (const FaultName& fault : kFaultNames) {
        std::string name = fault.name;
        if (fault.argument != nullptr) {
            name += std::string("[=") + fault.argument + "]";
        }
        name.resize(std::max<size_t>(name.size() + 2, 28), ' ');
        help += name + fault.text + "\n";
    }
    return help;
}

ndk::ScopedAStatus FaultInjector::AtCall(const char* operation, Fault die, Fault error) const {
    if (Has(die)) Die(operation);
    if (Has(error)) return Refuse(operation, kInternal, "fault switched on");
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus FaultInjector::AtOpen() const {
    return AtCall("openOfflineSession", Fault::kDieOnOpen, Fault::kOpenError);
}

ndk::ScopedAStatus FaultInjector::AtConfigure() const {
    return AtCall("configureOfflineStreams", Fault::kDieOnConfigure, Fault::kConfigureError);
}

ndk::ScopedAStatus FaultInjector::AtProcess() const {
    return AtCall("processOfflineRequest", Fault::kDieOnProcess, Fault::kProcessError);
}

void FaultInjector::BeforeFrame(const std::shared_ptr<IOfflineCameraCallback>& client,
                                const ::android::sp<ImportedBuffer::IMapper>& mapper,
                                const Stream& stream, const StopSignal& stop) const {
    if (Has(Fault::kDieAfterProcess)) {
        stop.WaitFor(kAnswerTime);
        Die("before the shutter");
    }
    if (Has(Fault::kEmptyCallbacks)) CallWithNothing(*client);
    if (Has(Fault::kReturnUnknown)) ReturnStreamBuffers(*client, stream.id, {kForeignBufferId});
    if (Has(Fault::kLend) || Has(Fault::kReturnTwice)) BorrowAndReturn(client, mapper, stream);
}

void FaultInjector::BorrowAndReturn(const std::shared_ptr<IOfflineCameraCallback>& client,
                                    const ::android::sp<ImportedBuffer::IMapper>& mapper,
                                    const Stream& stream) const {
    const int64_t count = Has(Fault::kLend) ? mArguments.at(Fault::kLend) : 1;
    BorrowedBuffers borrowed(client);
    const std::string problem = borrowed.Borrow(mapper, stream, static_cast<int32_t>(count));
    if (!problem.empty()) LogProblem("fault lend: " + problem);
    const std::vector<int64_t> ids = borrowed.Ids();
    borrowed.GiveBack();
    if (Has(Fault::kReturnTwice) && !ids.empty()) ReturnStreamBuffers(*client, stream.id, ids);
}

void FaultInjector::AlterMessages(std::vector<NotifyMsg>* messages) const {
    if (Has(Fault::kNoShutter)) messages->clear();
    for (NotifyMsg& message : *messages) {
        if (message.getTag() != NotifyMsg::shutter) continue;
        auto& shutter = message.get<NotifyMsg::shutter>();
        if (Has(Fault::kShutterOtherFrame)) shutter.frameNumber += kForeignFrameOffset;
        if (Has(Fault::kErrorNotify)) {
            ErrorMsg error;
            error.frameNumber = shutter.frameNumber;
            error.errorStreamId = -1;
            error.errorCode = ErrorCode::ERROR_REQUEST;
            message = NotifyMsg(error);
        }
    }
}

void FaultInjector::AlterResults(std::vector<OfflineCaptureResult>* results,
                                 const StopSignal& stop) const {
    if (Has(Fault::kLateResult)) {
        stop.WaitFor(std::chrono::milliseconds(mArguments.at(Fault::kLateResult)));
    }
    for (OfflineCaptureResult& result : *results) {
        auto& buffers = result.outFrameInfo.buffers;
        if (Has(Fault::kWrongBuffers)) {
            for (StreamBuffer& buffer : buffers) buffer.bufferId += kForeignBufferId;
        }
        if (Has(Fault::kExtraBuffer)) AddForeignBuffer(&buffers);
        if (Has(Fault::kReorderedBuffers)) std::reverse(buffers.begin(), buffers.end());
        if (Has(Fault::kCorruptMetadata) && !result.outFrameInfo.metadata.empty()) {
            result.outFrameInfo.metadata.pop_back();
        }
    }
    if (Has(Fault::kSplitResult)) {
        OfflineCaptureResult first = CopyResult(results->front());
        first.outFrameInfo.buffers.clear();
        first.inFrameInfo.buffers.clear();
        results->insert(results->begin(), std::move(first));
    }
    if (Has(Fault::kDuplicateResult)) results->push_back(CopyResult(results->back()));
    if (Has(Fault::kNoResult)) results->clear();
}

void FaultInjector::ShrinkPicture(imaging::Nv12View* picture) const {
    if (!Has(Fault::kSmallJpeg)) return;
    picture->width = std::min(picture->width, kSmallWidth);
    picture->height = std::min(picture->height, kSmallHeight);
}

}  // namespace offlinecamera
