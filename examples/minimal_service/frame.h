// One frame on its way: the buffers that a request lends, the picture made in them, and what the
// client will be told of it. A service of another mode differs here.
#pragma once

#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineCaptureResult.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineRequestInfo.h>
#include <string.h>

#include "imported_buffer.h"

namespace camera = aidl::vendor::zel::hardware::camera::offlinecamera;
namespace device = aidl::android::hardware::camera::device;

struct Frame {
    device::Stream mosaicStream, pictureStream;
    offlinecamera::ImportedBuffer mosaic, picture;
    camera::OfflineCaptureResult result;
};

// Imports the one buffer of a stream, and notes for the result which one it was. Gives the problem.
inline std::string take(const std::vector<device::StreamBuffer>& buffers,
                        const device::Stream& stream, offlinecamera::ImportedBuffer* imported,
                        camera::OfflineFrameInfo* info) {
    if (buffers.size() != 1) return "one buffer for each stream; ";
    info->buffers.resize(1);
    info->buffers[0].streamId = buffers[0].streamId;
    info->buffers[0].bufferId = buffers[0].bufferId;
    info->numPartialMetadata = 1;
    const auto mapper = offlinecamera::ImportedBuffer::IMapper::getService();
    if (mapper == nullptr) return "no graphics mapper; ";
    return imported->Import(mapper, buffers[0].buffer, buffers[0].acquireFence, stream);
}

inline std::string take(const camera::OfflineRequestInfo& request, Frame* frame) {
    return take(request.inFrameInfos[0].buffers, frame->mosaicStream, &frame->mosaic,
                &frame->result.inFrameInfo) +
           take(request.outputBuffers, frame->pictureStream, &frame->picture,
                &frame->result.outFrameInfo);
}

// The middle of the mosaic. Four RAW10 pixels are five bytes; each of the first four holds the
// upper eight bits of one.
inline void develop(const imaging::RawView& raw, const imaging::MutableNv12View& picture) {
    const uint32_t left = (raw.width - picture.width) / 2, top = (raw.height - picture.height) / 2;
    for (uint32_t y = 0; y < picture.height; ++y) {
        const uint8_t* const from = raw.data + (y + top) * raw.strideBytes;
        uint8_t* const to = picture.y + y * picture.strideBytes;
        for (uint32_t x = 0; x < picture.width; ++x)
            to[x] = from[(x + left) / 4 * 5 + (x + left) % 4];
    }
    for (uint32_t y = 0; y < picture.height / 2; ++y) {
        memset(picture.uv + y * picture.strideBytes, 128, picture.width);  // grey
    }
}

// Leaves the buffers unlocked: a client that gets the result reads the picture. Gives the problem.
inline std::string develop(const Frame& frame) {
    offlinecamera::LockedBuffer mosaic, picture;
    std::string problem = mosaic.Lock(frame.mosaic, offlinecamera::Access::kRead);
    if (problem.empty()) problem = picture.Lock(frame.picture, offlinecamera::Access::kWrite);
    if (problem.empty()) develop(mosaic.Raw(frame.mosaicStream), picture.Nv12(frame.pictureStream));
    return problem;
}
