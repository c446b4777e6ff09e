// Messages and results of the service's frames.
#include "frame_messages.h"

#include "camera_metadata_blob.h"

namespace offlinecamera {

namespace {

using ::aidl::android::hardware::camera::device::ErrorCode;
using ::aidl::android::hardware::camera::device::ErrorMsg;
using ::aidl::android::hardware::camera::device::ShutterMsg;

StreamBuffer Describe(const RequestBuffer& buffer, BufferStatus status) {
    StreamBuffer description;
    description.streamId = buffer.stream->id;
    description.bufferId = buffer.bufferId;
    description.status = status;
    return description;
}

}  // namespace

NotifyMsg MakeShutter(int32_t frameNumber, int64_t timestamp) {
    ShutterMsg shutter;
    shutter.frameNumber = frameNumber;
    shutter.timestamp = timestamp;
    shutter.readoutTimestamp = timestamp;
    return NotifyMsg(shutter);
}

NotifyMsg MakeError(int32_t frameNumber) {
    ErrorMsg error;
    error.frameNumber = frameNumber;
    error.errorStreamId = -1;
    error.errorCode = ErrorCode::ERROR_REQUEST;
    return NotifyMsg(error);
}

OfflineCaptureResult MakeResult(const Request& request, BufferStatus status) {
    OfflineCaptureResult result;
    result.frameNumber = request.frameNumber;
    for (const RequestBuffer& buffer : request.outputs) {
        result.outFrameInfo.buffers.push_back(Describe(buffer, status));
    }
    result.outFrameInfo.numPartialMetadata = 1;
    result.outFrameInfo.metadata = MakeResultMetadata(request.orientation);
    for (const auto& frame : request.inputs) {
        for (const RequestBuffer& buffer : frame) {
            result.inFrameInfo.buffers.push_back(Describe(buffer, BufferStatus::OK));
        }
    }
    return result;
}

}  // namespace offlinecamera
