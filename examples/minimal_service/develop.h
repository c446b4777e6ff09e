// The picture that the service makes of a request. A service of another mode differs here.
#pragma once

#include <string.h>

#include "request.h"

// The middle of the mosaic. Four RAW10 pixels are five bytes; each of the first four holds the
// upper eight bits of one.
inline void Develop(const imaging::RawView& raw, const imaging::MutableNv12View& picture) {
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

// Leaves the buffers unlocked: a client that gets the result reads the picture.
inline base::Result<base::Done> Develop(const offlinecamera::Request& request) {
    const offlinecamera::RequestBuffer& from = request.inputs[0][0];
    const auto mosaic =
            offlinecamera::LockedBuffer::Lock(from.buffer, offlinecamera::Access::kRead);
    if (!mosaic.Ok()) return mosaic.GetFailure();
    for (const offlinecamera::RequestBuffer& to : request.outputs) {
        const auto picture =
                offlinecamera::LockedBuffer::Lock(to.buffer, offlinecamera::Access::kWrite);
        if (!picture.Ok()) return picture.GetFailure();
        Develop(mosaic.Value().Raw(), picture.Value().Nv12());
    }
    return base::Done{};
}
