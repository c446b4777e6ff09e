// Runs the camera physics on the buffers of a request, and tells the client about it.
#include "pipeline.h"

#include <aidl/android/hardware/camera/device/CameraBlobId.h>
#include <imaging/b2y.h>
#include <imaging/jpeg.h>
#include <imaging/multi_frame.h>

#include <chrono>
#include <cstring>

#include "faults.h"
#include "refusal.h"

namespace offlinecamera {

namespace {

using ::aidl::android::hardware::camera::device::CameraBlobId;
using base::Done;
using base::Failure;
using base::Result;

// From the call to the shutter. It lets the answer of processOfflineRequest, with the frame number
// in it, go first.
constexpr std::chrono::milliseconds kShutterDelay(1);

int64_t Nanoseconds() {
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// Calls `develop` with the picture of every output.
template <class Develop>
Result<Done> DevelopAll(const std::vector<RequestBuffer>& outputs, const Develop& develop) {
    for (const RequestBuffer& output : outputs) {
        const auto picture = LockedBuffer::Lock(output.buffer, Access::kWrite);
        if (!picture.Ok()) return picture.GetFailure();
        imaging::MutableNv12View view = picture.Value().Nv12();
        if (faults::Has("short-picture")) view.height -= 2;
        const Result<Done> done = develop(view);
        if (!done.Ok()) return done;
        faults::SpoilPicture(view);
    }
    return Done{};
}

Result<Done> BayerToYuv(const Request& request) {
    const auto mosaic = LockedBuffer::Lock(request.inputs[0][0].buffer, Access::kRead);
    if (!mosaic.Ok()) return mosaic.GetFailure();
    return DevelopAll(request.outputs, [&](const imaging::MutableNv12View& picture) {
        return imaging::RawToNv12(mosaic.Value().Raw(), picture);
    });
}

Result<Done> MultiFrame(const Request& request, const Client& client) {
    auto scratch = BorrowedBuffers::Borrow(client, *request.inputs[0][0].stream, 1);
    if (!scratch.Ok()) return scratch.GetFailure();
    if (faults::Has("keep-lent")) scratch.Value().Keep();
    const auto averages = LockedBuffer::Lock(scratch.Value()[0], Access::kWrite);
    if (!averages.Ok()) return averages.GetFailure();

    std::vector<LockedBuffer> frames;
    std::vector<imaging::RawView> mosaics;
    for (const auto& input : request.inputs) {
        auto frame = LockedBuffer::Lock(input[0].buffer, Access::kRead);
        if (!frame.Ok()) return frame.GetFailure();
        mosaics.push_back(frame.Value().Raw());
        frames.push_back(std::move(frame).Value());
    }
    return DevelopAll(request.outputs, [&](const imaging::MutableNv12View& picture) {
        return imaging::AverageToNv12(mosaics, averages.Value().Raw(), picture);
    });
}

void WriteBlobTrailer(uint8_t* buffer, int32_t bufferSize, size_t fileSize) {
    static_assert(kBlobTrailerBytes == 2 * sizeof(int32_t));
    const int32_t trailer[2] = {static_cast<int32_t>(CameraBlobId::JPEG),
                                static_cast<int32_t>(fileSize)};
    memcpy(buffer + bufferSize - kBlobTrailerBytes, trailer, sizeof(trailer));
}

Result<Done> YuvToJpeg(const Request& request) {
    const auto picture = LockedBuffer::Lock(request.inputs[0][0].buffer, Access::kRead);
    if (!picture.Ok()) return picture.GetFailure();
    imaging::Nv12View view = picture.Value().Nv12();
    faults::ShrinkPicture(&view);
    imaging::JpegSettings settings;
    settings.orientationDegrees = request.orientation;
    for (const RequestBuffer& output : request.outputs) {
        const auto file = LockedBuffer::Lock(output.buffer, Access::kWrite);
        if (!file.Ok()) return file.GetFailure();
        uint8_t* const data = file.Value().Data();
        const int32_t bufferSize = output.stream->bufferSize;
        const auto capacity = static_cast<size_t>(bufferSize - kBlobTrailerBytes);
        const Result<size_t> fileSize = imaging::EncodeJpeg(view, settings, data, capacity);
        if (!fileSize.Ok()) return fileSize.GetFailure();
        if (faults::Has("no-trailer")) continue;
        WriteBlobTrailer(data, bufferSize, fileSize.Value() + (faults::Has("long-size") ? 100 : 0));
    }
    return Done{};
}

// Fills the request's outputs. Fails with what went wrong; the outputs' content is then undefined.
Result<Done> MakePictures(const Request& request, const Client& client) {
    switch (request.streams->mode) {
        case OpMode::kB2Y:
            return BayerToYuv(request);
        case OpMode::kMMF:
            return MultiFrame(request, client);
        case OpMode::kY2J:
            return YuvToJpeg(request);
    }
    return Failure{"unknown op mode"};
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
