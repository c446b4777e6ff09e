// NV12 to JPEG through libjpeg's raw-data interface.
#include "jpeg_strip.h"

#include <jpeglib.h>

#include <csetjmp>
#include <cstdio>  // jpeglib.h needs FILE
#include <cstring>
#include <vector>

namespace imaging {

namespace {

// libjpeg reports an error by calling a function that must not return; this one jumps back.
struct ErrorState {
    jpeg_error_mgr manager;  // first: libjpeg knows only this part
    jmp_buf back;
    char text[JMSG_LENGTH_MAX];
};

[[noreturn]] void OnError(j_common_ptr info) {
    auto* state = reinterpret_cast<ErrorState*>(info->err);
    info->err->format_message(info, state->text);
    longjmp(state->back, 1);
}

void OnWarning(j_common_ptr, int) {}

// Row pointers of one row of coded units, and the memory behind those that must be made.
struct Rows {
    JSAMPROW y[kMcuSide];
    JSAMPROW cb[kMcuSide / 2];
    JSAMPROW cr[kMcuSide / 2];
    uint8_t* paddedY;  // kMcuSide rows of paddedWidth bytes, or null: the picture's rows serve
    size_t paddedWidth;
};

void PadRow(uint8_t* row, size_t from, size_t to) {
    memset(row + from, row[from - 1], to - from);
}

void SplitPairs(const uint8_t* __restrict pairs, uint32_t count, uint8_t* __restrict first,
                uint8_t* __restrict second) {
    for (uint32_t x = 0; x < count; ++x) {
        first[x] = pairs[2 * x];
        second[x] = pairs[2 * x + 1];
    }
}

// Fills the rows from luma row `top` on; beyond the last row and column the picture repeats.
void PrepareRows(const Nv12View& strip, uint32_t top, Rows* rows) {
    for (uint32_t i = 0; i < kMcuSide; ++i) {
        const uint32_t y = top + i < strip.height ? top + i : strip.height - 1;
        const uint8_t* source = strip.y + y * strip.strideBytes;
        rows->y[i] = const_cast<JSAMPROW>(source);
        if (rows->paddedY != nullptr) {
            rows->y[i] = rows->paddedY + i * rows->paddedWidth;
            memcpy(rows->y[i], source, strip.width);
            PadRow(rows->y[i], strip.width, rows->paddedWidth);
        }
    }
    for (uint32_t i = 0; i < kMcuSide / 2; ++i) {
        const uint32_t half = strip.height / 2;
        const uint32_t y = top / 2 + i < half ? top / 2 + i : half - 1;
        const uint8_t* source = strip.uv + y * strip.strideBytes;
        SplitPairs(source, strip.width / 2, rows->cb[i], rows->cr[i]);
        PadRow(rows->cb[i], strip.width / 2, rows->paddedWidth / 2);
        PadRow(rows->cr[i], strip.width / 2, rows->paddedWidth / 2);
    }
}

void SetParameters(j_compress_ptr info, const Nv12View& strip, const JpegStripSettings& settings) {
    info->image_width = strip.width;
    info->image_height = strip.height;
    info->input_components = 3;
    info->in_color_space = JCS_YCbCr;
    jpeg_set_defaults(info);  // 4:2:0, JFIF header
    jpeg_set_quality(info, settings.quality, TRUE);
    info->raw_data_in = TRUE;
    info->restart_interval = settings.restartInterval;
}

// libjpeg may jump out of this function, so nothing in it has a destructor. `*data` and `*size` are
// memory to begin with, which libjpeg replaces when it is too small.
bool Compress(const Nv12View& strip, const JpegStripSettings& settings, Rows* rows, uint8_t** data,
              unsigned long* size, ErrorState* error) {
    jpeg_compress_struct info = {};
    info.err = jpeg_std_error(&error->manager);
    error->manager.error_exit = OnError;
    error->manager.emit_message = OnWarning;
    if (setjmp(error->back) != 0) {
        jpeg_destroy_compress(&info);
        return false;
    }
    jpeg_create_compress(&info);
    jpeg_mem_dest(&info, data, size);
    SetParameters(&info, strip, settings);
    jpeg_start_compress(&info, TRUE);
    jpeg_write_marker(&info, JPEG_APP0 + 1, settings.exif.data(), kExifSegmentBytes);
    JSAMPARRAY planes[3] = {rows->y, rows->cb, rows->cr};
    while (info.next_scanline < info.image_height) {
        PrepareRows(strip, info.next_scanline, rows);
        jpeg_write_raw_data(&info, planes, kMcuSide);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    return true;
}

}  // namespace

std::string EncodeJpegStrip(const Nv12View& strip, const JpegStripSettings& settings,
                            FileBytes* file) {
    Rows rows = {};
    rows.paddedWidth = (strip.width + kMcuSide - 1) / kMcuSide * kMcuSide;
    std::vector<uint8_t> luma(rows.paddedWidth == strip.width ? 0 : kMcuSide * rows.paddedWidth);
    rows.paddedY = luma.empty() ? nullptr : luma.data();
    std::vector<uint8_t> chroma(kMcuSide * rows.paddedWidth / 2);
    for (uint32_t i = 0; i < kMcuSide / 2; ++i) {
        rows.cb[i] = chroma.data() + 2 * i * (rows.paddedWidth / 2);
        rows.cr[i] = rows.cb[i] + rows.paddedWidth / 2;
    }
    // What a photo takes at high quality: about two bits a pixel.
    unsigned long size = 4096 + size_t{strip.width} * strip.height / 4;
    auto* const reserved = static_cast<uint8_t*>(malloc(size));
    uint8_t* data = reserved;
    ErrorState error = {};
    const bool done = Compress(strip, settings, &rows, &data, &size, &error);
    if (data != reserved) free(reserved);
    file->data.reset(data);
    file->size = size;
    return done ? std::string() : error.text;
}

}  // namespace imaging
