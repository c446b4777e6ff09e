// Writes the output buffers of a completed result to files and frees them.

#include <aidl/android/hardware/camera/device/CameraBlob.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "gralloc/clientlog.h"
#include "openfile.h"
#include "vexofflinecameraclient.h"

namespace vendor::zel::hardware::camera::offlinecamera::implementation {

using ::aidl::android::hardware::camera::device::CameraBlob;

namespace {

constexpr uint32_t kMinJpegSize = 262152;

const char* ModePart(int32_t opMode) {
    switch (opMode) {
        case kB2Y:
            return "_B2Y";
        case kY2J:
            return "_Y2J";
        case kY2Y:
            return "_Y2Y";
        case kMMF:
            return "_MMF";
        case kQLL:
            return "_QLL";
        case kR2R:
            return "_R2R";
        default:
            CLIENT_LOGE("Unsupported mode: %d", opMode);
            return ".unknown";
    }
}

const char* Extension(PixelFormat format) {
    switch (format) {
        case PixelFormat::RAW10:
            return ".raw";
        case PixelFormat::YCBCR_420_888:
            return ".yuv";
        case PixelFormat::BLOB:
            return ".jpg";
        default:
            CLIENT_LOGE("Unsupported format: %d", static_cast<int32_t>(format));
            return ".unknown";
    }
}

// Two bytes per pixel. A frame for which that exceeds 31 bits ends the process.
uint32_t BlobSpan(uint32_t width, uint32_t height) {
    int32_t pixels = 0;
    int32_t bytes = 0;
    if (__builtin_mul_overflow(width, height, &pixels) ||
        __builtin_mul_overflow(pixels, 2, &bytes)) {
        abort();
    }
    return static_cast<uint32_t>(bytes);
}

// Number of bytes to write of a locked BLOB buffer: the length of the JPEG, as a trailer says. The
// trailer is the last eight bytes of the buffer's span, which is two bytes per pixel.
//
// Kept: a length below kMinJpegSize is not used. In the JFIF data space twice the span is written
// instead, which may go beyond the buffer; in any other, a third of the span.
uint32_t BlobImageSize(const ClientCaptureRequest& request, const char* address) {
    const uint32_t bufSize = BlobSpan(request.width, request.height);
    CameraBlob trailer;
    memcpy(&trailer.blobId, address + bufSize - 8, sizeof(trailer.blobId));
    memcpy(&trailer.blobSizeBytes, address + bufSize - 4, sizeof(trailer.blobSizeBytes));

    uint32_t imageSize = 0;
    // Signed, as the field is: garbage with the top bit set counts as too small.
    if (trailer.blobSizeBytes >= static_cast<int32_t>(kMinJpegSize)) {
        imageSize = static_cast<uint32_t>(trailer.blobSizeBytes);
    } else if (request.dataSpace == Dataspace::JFIF) {
        imageSize = request.width * request.height * 4;
    } else {
        imageSize = bufSize / 3;
    }
    CLIENT_LOGI(
            "blob structure info Id %d, JPEGBlobSize %d, bufSize %u, imageSize %u, kMinJpegSize "
            "%u",
            static_cast<int32_t>(trailer.blobId), trailer.blobSizeBytes, bufSize, imageSize,
            kMinJpegSize);
    return imageSize;
}

void WriteBuffer(FILE* file, const ClientCaptureRequest& request, const ClientCaptureBuffer& buffer,
                 const char* address) {
    const bool isBlob = request.format == PixelFormat::BLOB;
    const uint32_t imageSize = isBlob ? BlobImageSize(request, address) : 0;
    CLIENT_LOGI("imageSize %d bufferSize  %lu", imageSize,
                static_cast<unsigned long>(buffer.bufferSize));
    fwrite(address, 1, isBlob ? imageSize : buffer.bufferSize, file);
}

}  // namespace

std::string OfflineCameraClient::ConvertStreamBufferInfo2String(PixelFormat format, uint32_t width,
                                                                uint32_t height, int32_t stride,
                                                                int32_t scanline) {
    if (format == PixelFormat::BLOB) {
        return "_Width[" + std::to_string(width) + "]_Height[" + std::to_string(height) + "]";
    }
    return "_Stride[" + std::to_string(stride) + "]_Scanline[" + std::to_string(scanline) + "]";
}

std::string OfflineCameraClient::DumpFileName(const ClientCaptureRequest& request,
                                              const ClientCaptureBuffer& buffer,
                                              int32_t frameNumber) const {
    std::string name = kOfflineDataDirectory + "OfflineAidl_" + "CameraId_" + m_streamConfigName +
                       "_Frame_" + std::to_string(frameNumber);
    name += ModePart(m_opMode);
    name += ConvertStreamBufferInfo2String(request.format, request.width, request.height,
                                           buffer.stride, buffer.scanline);
    name += Extension(request.format);
    return name;
}

void OfflineCameraClient::DumpCaptureBuffer(const ClientCaptureRequest& request,
                                            const ClientCaptureBuffer& buffer,
                                            int32_t frameNumber) {
    CLIENT_LOGI("result completed importedBuf %p", static_cast<void*>(buffer.importedBuf));
    const auto* address = static_cast<const char*>(
            m_grallocWrapper->lock(buffer.importedBuf, static_cast<BufferUsage>(request.usage)));
    CLIENT_LOGI("result completed buffer %p", static_cast<const void*>(address));
    if (address != nullptr) {
        const std::string name = DumpFileName(request, buffer, frameNumber);
        if (const File file = OpenFile(name.c_str(), "wb"); file != nullptr) {
            WriteBuffer(file.get(), request, buffer, address);
        } else {
            CLIENT_LOGE("%s: store fp failed", "WaitCaptureResultCompleted");
        }
        m_grallocWrapper->unlock(buffer.importedBuf);
    }
    freeBuffer(buffer.importedBuf);
}

void OfflineCameraClient::DumpResultBuffer(const ClientStreamBuffer& resultBuffer,
                                           int32_t frameNumber) {
    // Kept: adds an empty request for an unknown stream id, and dumps nothing.
    const ClientCaptureRequest& request =
            m_captureRequests[static_cast<uint32_t>(resultBuffer.streamId)];
    for (const ClientCaptureBuffer& buffer : request.buffers) {
        if (static_cast<int64_t>(buffer.bufferId) == resultBuffer.bufferId) {
            DumpCaptureBuffer(request, buffer, frameNumber);
        }
    }
}

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation
