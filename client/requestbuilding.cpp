// Turns the configured streams into one request with filled input buffers.

#include <aidlcommonsupport/NativeHandle.h>
#include <gralloctypes/Gralloc4.h>
#include <hidl/HidlSupport.h>

#include <string>
#include <utility>

#include "gralloc/clientlog.h"
#include "vexofflinecameraclient.h"

namespace vendor::zel::hardware::camera::offlinecamera::implementation {

using ::aidl::android::hardware::camera::device::BufferStatus;

namespace {

constexpr size_t kFramesPerMmfRequest = 3;

}  // namespace

OfflineCameraClient::AllocatedBuffer OfflineCameraClient::AllocateStreamBuffer(
        const Stream& stream) {
    AllocatedBuffer buffer;
    const bool isBlob = stream.format == PixelFormat::BLOB;
    buffer.width = static_cast<uint32_t>(isBlob ? stream.bufferSize : stream.width);
    buffer.height = isBlob ? 1 : static_cast<uint32_t>(stream.height);
    buffer.handle = m_grallocWrapper->allocate(buffer.width, buffer.height, stream.format,
                                               stream.usage, &buffer.stride);
    if (buffer.handle == nullptr) {
        return buffer;
    }
    m_allocatedHandles.insert(buffer.handle);
    ::android::hardware::hidl_vec<uint8_t> encodedSize;
    m_grallocWrapper->get(buffer.handle, ::android::gralloc4::MetadataType_AllocationSize,
                          &encodedSize);
    ::android::gralloc4::decodeAllocationSize(encodedSize, &buffer.allocationSize);
    CLIENT_LOGI("buffer allocationsize: %lu", static_cast<unsigned long>(buffer.allocationSize));
    m_zelInterface->GetPlaneLayout(stream.format, stream.usage, buffer.width, buffer.height,
                                   &buffer.scanline);
    return buffer;
}

StreamBuffer OfflineCameraClient::MakeStreamBuffer(const Stream& stream, int64_t bufferId,
                                                   const native_handle* handle) {
    StreamBuffer buffer;
    buffer.streamId = stream.id;
    buffer.bufferId = bufferId;
    if (handle != nullptr) {
        buffer.buffer = ::android::dupToAidl(handle);
    }
    buffer.status = BufferStatus::OK;
    return buffer;
}

void OfflineCameraClient::RecordCaptureBuffer(const Stream& stream, int64_t bufferId,
                                              const AllocatedBuffer& buffer) {
    ClientCaptureRequest& request = m_captureRequests[static_cast<uint32_t>(stream.id)];
    request.format = stream.format;
    request.buffers.push_back({static_cast<uint32_t>(bufferId), buffer.handle,
                               buffer.allocationSize, buffer.stride, buffer.scanline});
    request.usage = static_cast<uint64_t>(stream.usage);
    request.width = static_cast<uint32_t>(stream.width);
    request.height = static_cast<uint32_t>(stream.height);
    request.dataSpace = stream.dataSpace;
}

void OfflineCameraClient::LoadSourceFrame(const Stream& stream, const AllocatedBuffer& buffer,
                                          void* address, int32_t* status) {
    char* const destination = static_cast<char*>(address);
    switch (stream.format) {
        case PixelFormat::YCBCR_420_888: {
            if (m_opMode != kY2J && m_opMode != kMMF) {
                return;
            }
            const bool isMmf = m_opMode == kMMF;
            const std::string path =
                    kOfflineDataDirectory + (isMmf ? "mmf_fd.yuv" : "4000_3000_NV12.yuv");
            *status = LoadOffineSourceYUVFrame(path.c_str(), destination,
                                               static_cast<uint32_t>(buffer.stride),
                                               static_cast<uint32_t>(buffer.scanline));
            if (*status != kSuccess) {
                CLIENT_LOGE(isMmf ? "load source mmf fd frame failed"
                                  : "load source yuv frame failed");
            }
            return;
        }
        case PixelFormat::RAW10:
            *status = LoadOffineSourceRawFrame(destination, buffer.stride, buffer.scanline);
            if (*status != kSuccess) {
                CLIENT_LOGE("load source raw frame failed");
            }
            return;
        default:
            CLIENT_LOGW("please process this stream format %d",
                        static_cast<int32_t>(stream.format));
    }
}

OfflineFrameInfo OfflineCameraClient::BuildInputFrame(size_t frame, int32_t* status) {
    OfflineFrameInfo frameInfo;
    if (m_opMode == kY2J) {
        BuildJpegOrientationMetadata(&frameInfo.metadata);
    } else {
        LoadOffineInputMetadata(&frameInfo.metadata);
    }
    for (size_t i = 0; i < m_inputStreams.size(); ++i) {
        const Stream& stream = m_inputStreams[i];
        const auto bufferId = static_cast<int64_t>(frame * m_inputStreams.size() + i + 1);
        const AllocatedBuffer buffer = AllocateStreamBuffer(stream);
        CLIENT_LOGI(
                "input streamId %d, bufferStride %d, bufferScanline %d buffer %p width %d, height "
                "%d bufferSize  %lu",
                stream.id, buffer.stride, buffer.scanline, static_cast<void*>(buffer.handle),
                buffer.width, buffer.height, static_cast<unsigned long>(buffer.allocationSize));
        StreamBuffer streamBuffer = MakeStreamBuffer(stream, bufferId, buffer.handle);
        RecordCaptureBuffer(stream, bufferId, buffer);

        void* const address = m_grallocWrapper->lock(buffer.handle, stream.usage);
        // Kept: a failed load does not stop the loop, and the next load that succeeds hides it.
        LoadSourceFrame(stream, buffer, address, status);
        m_grallocWrapper->unlock(buffer.handle);
        frameInfo.buffers.push_back(std::move(streamBuffer));
    }
    return frameInfo;
}

int32_t OfflineCameraClient::InitOfflineRequest(const OfflineSessionConfigureInfo* streamConfig) {
    if (streamConfig == nullptr) {
        CLIENT_LOGE("streamConfig is NULL");
        return kNullGiven;
    }
    int32_t status = kSuccess;
    OfflineRequestInfo request;
    const size_t frames = m_opMode == kMMF ? kFramesPerMmfRequest : 1;
    for (size_t frame = 0; frame < frames; ++frame) {
        request.inFrameInfos.push_back(BuildInputFrame(frame, &status));
    }
    if (status != kSuccess) {
        return status;
    }

    for (size_t j = 0; j < m_outputStreams.size(); ++j) {
        const Stream& stream = m_outputStreams[j];
        // Kept: starts at 1 again, so an output may have the id of an input of another stream.
        const auto bufferId = static_cast<int64_t>(j + 1);
        const AllocatedBuffer buffer = AllocateStreamBuffer(stream);
        CLIENT_LOGI(
                "output streamId %d, bufferStride %d, bufferScanline %d, buffer %p width %d, "
                "height %d bufferSize  %lu",
                stream.id, buffer.stride, buffer.scanline, static_cast<void*>(buffer.handle),
                buffer.width, buffer.height, static_cast<unsigned long>(buffer.allocationSize));
        StreamBuffer streamBuffer = MakeStreamBuffer(stream, bufferId, buffer.handle);
        RecordCaptureBuffer(stream, bufferId, buffer);
        request.outputBuffers.push_back(std::move(streamBuffer));
    }
    request.frameNumber = -1;
    m_offlineRequests.push_back(std::move(request));
    return status;
}

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation
