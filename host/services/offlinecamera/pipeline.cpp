// Runs the camera physics on the buffers of a request.
#include "pipeline.h"

#include <aidl/android/hardware/camera/device/CameraBlob.h>
#include <aidl/android/hardware/camera/device/CameraBlobId.h>
#include <imaging/b2y.h>
#include <imaging/jpeg.h>
#include <imaging/multi_frame.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace offlinecamera {

namespace {

using ::aidl::android::hardware::camera::device::CameraBlobId;

/** Calls develop(picture) for every output, which returns what went wrong or nothing. */
template <class Develop>
std::string DevelopAll(const std::vector<RequestBuffer>& outputs, const Develop& develop) {
    for (const RequestBuffer& output : outputs) {
        LockedBuffer picture;
        std::string problem = picture.Lock(output.buffer, Access::kWrite);
        if (problem.empty()) problem = develop(picture.Nv12(*output.stream));
        if (!problem.empty()) return problem;
    }
    return {};
}

void WriteBlobTrailer(uint8_t* buffer, int32_t bufferSize, size_t fileSize) {
    static_assert(kBlobTrailerBytes == 2 * sizeof(int32_t));
    const int32_t trailer[2] = {static_cast<int32_t>(CameraBlobId::JPEG),
                                static_cast<int32_t>(fileSize)};
    memcpy(buffer + bufferSize - kBlobTrailerBytes, trailer, sizeof(trailer));
}

}  // namespace

std::string Pipeline::Process(const Request& request,
                              const std::shared_ptr<IOfflineCameraCallback>& client) const {
    switch (request.streams->mode) {
        case OpMode::kB2Y:
            return BayerToYuv(request);
        case OpMode::kMMF:
            return MultiFrame(request, client);
        case OpMode::kY2J:
            return YuvToJpeg(request);
    }
    return "unknown op mode";
}

std::string Pipeline::BayerToYuv(const Request& request) const {
    const RequestBuffer& input = request.inputs[0][0];
    LockedBuffer mosaic;
    std::string problem = mosaic.Lock(input.buffer, Access::kRead);
    if (!problem.empty()) return problem;
    return DevelopAll(request.outputs, [&](const imaging::MutableNv12View& picture) {
        return imaging::RawToNv12(mosaic.Raw(*input.stream), picture);
    });
}

std::string Pipeline::MultiFrame(const Request& request,
                                 const std::shared_ptr<IOfflineCameraCallback>& client) const {
    const Stream& rawStream = *request.inputs[0][0].stream;
    BorrowedBuffers scratch(client);
    std::string problem = scratch.Borrow(mMapper, rawStream, 1);
    LockedBuffer averages;
    if (problem.empty()) problem = averages.Lock(scratch[0], Access::kWrite);

    std::vector<LockedBuffer> frames(request.inputs.size());
    std::vector<imaging::RawView> mosaics;
    for (size_t f = 0; problem.empty() && f < frames.size(); ++f) {
        problem = frames[f].Lock(request.inputs[f][0].buffer, Access::kRead);
        if (problem.empty()) mosaics.push_back(frames[f].Raw(rawStream));
    }
    if (!problem.empty()) return problem;
    return DevelopAll(request.outputs, [&](const imaging::MutableNv12View& picture) {
        return imaging::AverageToNv12(mosaics, averages.Raw(rawStream), picture);
    });
}

std::string Pipeline::YuvToJpeg(const Request& request) const {
    const RequestBuffer& input = request.inputs[0][0];
    LockedBuffer picture;
    std::string problem = picture.Lock(input.buffer, Access::kRead);
    if (!problem.empty()) return problem;
    imaging::Nv12View view = picture.Nv12(*input.stream);
    mFaults.ShrinkPicture(&view);
    imaging::JpegSettings settings;
    settings.orientationDegrees = request.orientation;
    for (const RequestBuffer& output : request.outputs) {
        LockedBuffer file;
        problem = file.Lock(output.buffer, Access::kWrite);
        if (!problem.empty()) return problem;
        const int32_t bufferSize = output.stream->bufferSize;
        size_t fileSize = 0;
        problem =
                imaging::EncodeJpeg(view, settings, file.Data(),
                                    static_cast<size_t>(bufferSize - kBlobTrailerBytes), &fileSize);
        if (!problem.empty()) return problem;
        WriteBlobTrailer(file.Data(), bufferSize, fileSize);
    }
    return {};
}

}  // namespace offlinecamera
