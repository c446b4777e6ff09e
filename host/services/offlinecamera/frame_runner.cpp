// Runs one request and tells the client about it.
#include "frame_runner.h"

#include <android/log.h>

#include <ctime>

#include "frame_messages.h"
#include "refusal.h"

namespace offlinecamera {

namespace {

// From the call to the shutter. It lets the answer of processOfflineRequest, with the frame number
// in it, go first.
constexpr std::chrono::milliseconds kShutterDelay(5);

int64_t Nanoseconds() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

}  // namespace

void FrameRunner::Run(Request& request, const StopSignal& stop) const {
    if (stop.WaitFor(kShutterDelay)) return;
    mFaults->BeforeFrame(mClient, mMapper, request.streams->inputs[0], stop);
    const int64_t timestamp = Nanoseconds();
    const auto sendShutter = [&] { Notify({MakeShutter(request.frameNumber, timestamp)}, stop); };
    if (!mFaults->ShutterComesLast()) sendShutter();

    const std::string problem = mPipeline.Process(request, mClient);
    if (!problem.empty()) {
        LogProblem("frame " + std::to_string(request.frameNumber) + " failed: " + problem);
        Notify({MakeError(request.frameNumber)}, stop);
    }
    std::vector<OfflineCaptureResult> results;
    results.push_back(
            MakeResult(request, problem.empty() ? BufferStatus::OK : BufferStatus::ERROR));
    SendResults(std::move(results), stop);
    if (mFaults->ShutterComesLast()) sendShutter();
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "frame %d: done in %lld ms", request.frameNumber,
                        static_cast<long long>((Nanoseconds() - timestamp) / 1'000'000));
}

void FrameRunner::Notify(std::vector<NotifyMsg> messages, const StopSignal& stop) const {
    mFaults->AlterMessages(&messages);
    if (messages.empty() || stop.Stopped()) return;
    const auto status = mClient->notify(messages);
    if (!status.isOk()) LogProblem("notify failed: " + status.getDescription());
}

void FrameRunner::SendResults(std::vector<OfflineCaptureResult> results,
                              const StopSignal& stop) const {
    mFaults->AlterResults(&results, stop);
    for (OfflineCaptureResult& result : results) {
        if (stop.Stopped()) return;
        std::vector<OfflineCaptureResult> one;
        one.push_back(std::move(result));
        const auto status = mClient->processCaptureResult(one);
        if (!status.isOk()) LogProblem("processCaptureResult failed: " + status.getDescription());
    }
}

}  // namespace offlinecamera
