// libjpeg-turbo on planes that need no preparation at all.
#include "plain_jpeg.h"

#include <jpeglib.h>

#include <algorithm>
#include <cstdio>  // jpeglib.h needs FILE

namespace bench {

namespace {

constexpr uint32_t kMcu = 16;

uint32_t RoundUp(uint32_t pixels) {
    return (pixels + kMcu - 1) / kMcu * kMcu;
}

}  // namespace

PlanarPicture::PlanarPicture(const imaging::Nv12View& picture)
    : width(picture.width), height(picture.height), stride(RoundUp(width)) {
    for (uint32_t row = 0; row < RoundUp(height); ++row) {
        const uint8_t* from = picture.y + std::min(row, height - 1) * picture.strideBytes;
        for (uint32_t x = 0; x < stride; ++x) y.push_back(from[std::min(x, width - 1)]);
    }
    for (uint32_t row = 0; row < RoundUp(height) / 2; ++row) {
        const uint8_t* from = picture.uv + std::min(row, height / 2 - 1) * picture.strideBytes;
        for (uint32_t x = 0; x < stride / 2; ++x) {
            const uint32_t pair = 2 * std::min(x, width / 2 - 1);
            cb.push_back(from[pair]);
            cr.push_back(from[pair + 1]);
        }
    }
}

size_t EncodePlainJpeg(PlanarPicture& picture, int quality, uint8_t* out, size_t capacity) {
    jpeg_error_mgr error;
    jpeg_compress_struct info = {};
    info.err = jpeg_std_error(&error);  // ends the program at an error
    jpeg_create_compress(&info);
    unsigned char* memory = out;
    unsigned long size = capacity;
    jpeg_mem_dest(&info, &memory, &size);
    info.image_width = picture.width;
    info.image_height = picture.height;
    info.input_components = 3;
    info.in_color_space = JCS_YCbCr;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, quality, TRUE);
    info.raw_data_in = TRUE;
    jpeg_start_compress(&info, TRUE);
    JSAMPROW y[kMcu], cb[kMcu / 2], cr[kMcu / 2];
    JSAMPARRAY planes[3] = {y, cb, cr};
    while (info.next_scanline < info.image_height) {
        for (uint32_t i = 0; i < kMcu; ++i) {
            y[i] = &picture.y[(info.next_scanline + i) * size_t{picture.stride}];
        }
        for (uint32_t i = 0; i < kMcu / 2; ++i) {
            const size_t at = (info.next_scanline / 2 + i) * size_t{picture.stride} / 2;
            cb[i] = &picture.cb[at];
            cr[i] = &picture.cr[at];
        }
        jpeg_write_raw_data(&info, planes, kMcu);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    if (memory == out) return size;
    free(memory);
    return 0;
}

}  // namespace bench
