// The calls of a session.
#include "session.h"

#include <android/log.h>

#include <algorithm>
#include <set>

#include "frame_runner.h"
#include "refusal.h"

namespace offlinecamera {

namespace {

constexpr std::chrono::seconds kCloseWait(10);
constexpr std::chrono::seconds kEarlyResultWait(30);

constexpr char kConfigure[] = "configureOfflineStreams";
constexpr char kProcess[] = "processOfflineRequest";
constexpr char kClose[] = "closeOfflineSession";
constexpr char kEndedText[] = "the session has ended";

SessionWorker::Work MakeWork(const std::shared_ptr<IOfflineCameraCallback>& client,
                             const ::android::sp<ImportedBuffer::IMapper>& mapper,
                             const std::shared_ptr<const FaultInjector>& faults,
                             SessionSlots::Slot slot) {
    auto runner = std::make_shared<FrameRunner>(client, mapper, faults);
    return [runner, slot = std::move(slot)](Request& request, const StopSignal& stop) {
        runner->Run(request, stop);
    };
}

}  // namespace

SessionSlots::Slot SessionSlots::Take(pid_t client) {
    std::lock_guard<std::mutex> guard(mLock);
    size_t all = 0;
    for (const auto& entry : mTaken) all += entry.second;
    const auto own = mTaken.find(client);
    const size_t ofClient = own == mTaken.end() ? 0 : own->second;
    const size_t left = kMaxSessions - (all - ofClient);
    if (all >= kMaxSessions || (ofClient > 0 && ofClient >= left / 2)) return nullptr;
    ++mTaken[client];
    return {this, [self = shared_from_this(), client](const void*) { self->Free(client); }};
}

void SessionSlots::Free(pid_t client) {
    std::lock_guard<std::mutex> guard(mLock);
    const auto own = mTaken.find(client);
    if (--own->second == 0) mTaken.erase(own);
}

OfflineCameraSession::OfflineCameraSession(std::string clientName,
                                           std::shared_ptr<IOfflineCameraCallback> client,
                                           ::android::sp<ImportedBuffer::IMapper> mapper,
                                           std::shared_ptr<const FaultInjector> faults,
                                           SessionSlots::Slot slot)
    : mClientName(std::move(clientName)),
      mClient(std::move(client)),
      mMapper(std::move(mapper)),
      mFaults(std::move(faults)),
      mWorker(MakeWork(mClient, mMapper, mFaults, std::move(slot))) {}

OfflineCameraSession::~OfflineCameraSession() {
    // Runs on whatever thread let go last, which may have to serve the callback that the worker is
    // in: so no waiting here.
    BeginEnd("released");
}

bool OfflineCameraSession::WatchClient() {
    std::weak_ptr<DeathListener> self = ref<OfflineCameraSession>();
    return mDeathWatch.Begin(mClient->asBinder(), std::move(self));
}

ndk::ScopedAStatus OfflineCameraSession::configureOfflineStreams(
        const OfflineSessionConfigureInfo& info) {
    if (auto status = mFaults->AtConfigure(); !status.isOk()) return status;
    if (info.cameraId.size() > kMaxNameBytes) {
        return Refuse(kConfigure, kIllegalArgument,
                      "camera id of " + std::to_string(info.cameraId.size()) + " bytes: at most " +
                              std::to_string(kMaxNameBytes));
    }
    auto streams = std::make_shared<StreamSet>();
    const std::string problem = MakeStreamSet(info, streams.get());
    if (!problem.empty()) return Refuse(kConfigure, kIllegalArgument, problem);

    std::lock_guard<std::mutex> guard(mLock);
    if (mEnded) return Refuse(kConfigure, kWrongState, kEndedText);
    if (!mWorker.FramesInFlight().empty()) {
        return Refuse(kConfigure, kWrongState, "requests are still being worked on");
    }
    mStreams = std::move(streams);
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "session %s: camera %s, op mode %d, %zu streams",
                        mClientName.c_str(), info.cameraId.c_str(), info.opMode,
                        info.streams.size());
    return ndk::ScopedAStatus::ok();
}

std::string OfflineCameraSession::MakeRequests(const std::vector<OfflineRequestInfo>& infos,
                                               std::vector<Request>* out) const {
    for (size_t i = 0; i < infos.size(); ++i) {
        Request request;
        const std::string problem = MakeRequest(infos[i], mStreams, mMapper, &request);
        if (!problem.empty()) return "request " + std::to_string(i) + ": " + problem;
        out->push_back(std::move(request));
    }
    return {};
}

std::string OfflineCameraSession::AssignFrameNumbers(std::vector<Request>* requests,
                                                     int32_t* answer) {
    const std::vector<int32_t> inFlight = mWorker.FramesInFlight();
    std::set<int32_t> taken(inFlight.begin(), inFlight.end());
    int32_t next = mNextFrameNumber;
    Request* asking = nullptr;
    for (Request& request : *requests) {
        if (request.frameNumber == -1) {
            if (asking != nullptr) return "two requests ask for a frame number: one can be told";
            asking = &request;
        } else if (!taken.insert(request.frameNumber).second) {
            return "frame number " + std::to_string(request.frameNumber) + " is in use";
        } else if (request.frameNumber >= next) {
            if (request.frameNumber == INT32_MAX) return "frame number 2147483647 is too large";
            next = request.frameNumber + 1;
        }
    }
    if (asking != nullptr) {
        if (next == INT32_MAX) return "there are no frame numbers left";
        asking->frameNumber = next++;
    }
    *answer = (asking != nullptr ? *asking : requests->front()).frameNumber;
    mNextFrameNumber = next;
    return {};
}

ndk::ScopedAStatus OfflineCameraSession::processOfflineRequest(
        const std::vector<OfflineRequestInfo>& requests, int32_t* frameNumber) {
    if (auto status = mFaults->AtProcess(); !status.isOk()) return status;
    if (requests.empty()) return Refuse(kProcess, kIllegalArgument, "no requests");
    {
        std::lock_guard<std::mutex> guard(mLock);
        if (mEnded) return Refuse(kProcess, kWrongState, kEndedText);
        if (mStreams == nullptr) return Refuse(kProcess, kWrongState, "no streams are configured");
        if (mWorker.FramesInFlight().size() + requests.size() > kMaxRequestsInFlight) {
            return Refuse(kProcess, kNoResources,
                          "more than " + std::to_string(kMaxRequestsInFlight) + " requests");
        }
        std::vector<Request> checked;
        std::string problem = MakeRequests(requests, &checked);
        if (problem.empty()) problem = AssignFrameNumbers(&checked, frameNumber);
        if (!problem.empty()) return Refuse(kProcess, kIllegalArgument, problem);
        mWorker.Enqueue(std::move(checked));
    }
    if (mFaults->WaitsForTheResult()) mWorker.WaitUntilIdle(kEarlyResultWait);
    return ndk::ScopedAStatus::ok();
}

bool OfflineCameraSession::BeginEnd(const char* reason) {
    std::lock_guard<std::mutex> guard(mLock);
    if (mEnded) return false;
    mEnded = true;
    mStreams = nullptr;
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "session %s: %s", mClientName.c_str(), reason);
    return true;
}

ndk::ScopedAStatus OfflineCameraSession::closeOfflineSession() {
    if (!BeginEnd("closed")) return Refuse(kClose, kWrongState, kEndedText);
    mDeathWatch.End();
    if (!mWorker.Stop(kCloseWait)) {
        LogProblem("session " + mClientName + ": closed while its client was in a callback");
    }
    return ndk::ScopedAStatus::ok();
}

void OfflineCameraSession::OnClientDied() {
    if (BeginEnd("client died")) mWorker.Stop(std::chrono::seconds(0));
}

}  // namespace offlinecamera
