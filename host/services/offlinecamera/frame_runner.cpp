// Runs one request and tells the client about it.
#include "frame_runner.h"

#include <chrono>

#include "faults.h"
#include "pipeline.h"
#include "refusal.h"

namespace offlinecamera {

namespace {

// From the call to the shutter. It lets the answer of processOfflineRequest, with the frame number
// in it, go first.
constexpr std::chrono::milliseconds kShutterDelay(1);

int64_t Nanoseconds() {
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace

void RunFrame(const Request& request, const Client& client, const StopSignal& stop) {
    const auto notify = [&](NotifyMsg message) {
        if (!faults::AlterMessage(&message) || stop.Stopped()) return;
        const auto status = client->notify({message});
        if (!status.isOk()) LogProblem("notify failed: " + status.getDescription());
    };
    if (stop.WaitFor(kShutterDelay)) return;
    faults::BeforeFrame(client, request.streams->inputs[0], stop);
    const int64_t timestamp = Nanoseconds();
    if (!faults::Has("result-first")) notify(MakeShutter(request.frameNumber, timestamp));

    const auto made = MakePictures(request, client);
    if (!made.Ok() && faults::Has("silent-without-buffers")) return;
    if (!made.Ok()) {
        LogProblem("frame " + std::to_string(request.frameNumber) + " failed: " + made.Error());
        notify(MakeError(request.frameNumber));
    }
    const BufferStatus outputs = made.Ok() ? BufferStatus::OK : BufferStatus::ERROR;
    for (OfflineCaptureResult& result : faults::MakeResults(request, outputs, stop)) {
        if (stop.Stopped()) break;
        std::vector<OfflineCaptureResult> one;
        one.push_back(std::move(result));
        const auto status = client->processCaptureResult(one);
        if (!status.isOk()) LogProblem("processCaptureResult failed: " + status.getDescription());
    }
    faults::SpoilLater(request, stop);
    if (faults::Has("result-first")) notify(MakeShutter(request.frameNumber, timestamp));
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "frame %d: done in %lld ms", request.frameNumber,
                        static_cast<long long>((Nanoseconds() - timestamp) / 1'000'000));
}

}  // namespace offlinecamera
