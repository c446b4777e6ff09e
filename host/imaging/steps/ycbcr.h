// Steps 4 and 5 of imaging/camera_physics.h: the tone curve, looked up, and rows of luma and
// chroma.
#pragma once

#include <imaging/camera_physics.h>

#include "demosaic_row.h"

namespace imaging {

IMAGING_INLINE void ApplyToneCurve(const ToneTable& table, const FineRow& in, const ToneRow& out) {
    const uint8_t* const tone = table.data();
    const int16_t* const fine = in.data;
    uint8_t* const to = out.data;
    const size_t size = in.Size();
    // Not as vectors: taking indices out of one and putting bytes into another costs more than
    // the look-ups themselves.
#pragma clang loop vectorize(disable) interleave(disable) unroll_count(8)
    for (size_t i = 0; i < size; ++i) to[i] = tone[fine[i]];
}

IMAGING_INLINE void StoreLuma(const ToneRow& row, uint32_t width, uint8_t* out) {
    const auto luma = [&row](int column, uint32_t i) IMAGING_LAMBDA_INLINE {
        const auto value = [&row, column, i](Channel channel) IMAGING_LAMBDA_INLINE {
            return Convert<IntPixels>(Load<BytePixels>(row.At(channel, column) + i));
        };
        return Convert<BytePixels>(
                LumaValue(value(Channel::kRed), value(Channel::kGreen), value(Channel::kBlue)));
    };
    for (uint32_t i = 0; i < width / 2; i += kVectorPixels) {
        StoreInterleaved(luma(0, i), luma(1, i), width / 2 - i, out + 2 * i);
    }
}

// Cb, Cr, Cb, Cr .. of two rows.
IMAGING_INLINE void StoreChroma(const ToneRow& upper, const ToneRow& lower, uint32_t width,
                                uint8_t* out) {
    const auto blockSum = [&](Channel channel, uint32_t i) IMAGING_LAMBDA_INLINE {
        const auto value = [channel, i](const ToneRow& row, int column) IMAGING_LAMBDA_INLINE {
            return Convert<ShortPixels>(Load<BytePixels>(row.At(channel, column) + i));
        };
        return Convert<IntPixels>(value(upper, 0) + value(upper, 1) + value(lower, 0) +
                                  value(lower, 1));
    };
    for (uint32_t i = 0; i < width / 2; i += kVectorPixels) {
        const IntPixels red = blockSum(Channel::kRed, i);
        const IntPixels green = blockSum(Channel::kGreen, i);
        const IntPixels blue = blockSum(Channel::kBlue, i);
        StoreInterleaved(Convert<BytePixels>(ChromaBlueValue(red, green, blue)),
                         Convert<BytePixels>(ChromaRedValue(red, green, blue)), width / 2 - i,
                         out + 2 * i);
    }
}

}  // namespace imaging
