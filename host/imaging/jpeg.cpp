// NV12 to JPEG through libjpeg's raw-data interface.
#include <imaging/jpeg.h>
#include <jpeglib.h>

#include <csetjmp>
#include <cstdio>  // jpeglib.h needs FILE
#include <vector>

#include "exif.h"
#include "plane_checks.h"

namespace imaging {

namespace {

constexpr uint32_t kMcuRows = 16;  // luma rows of one row of minimum coded units at 4:2:0

/** libjpeg reports an error by calling a function that must not return; this one jumps back. */
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

/**
 * Writes into memory of fixed size. libjpeg calls OnFull as soon as no byte is left, even if it has
 * nothing more to write; so a spare byte follows, and only writing that one is an error.
 */
struct FixedDestination {
    jpeg_destination_mgr manager;  // first: libjpeg knows only this part
    uint8_t* data;
    size_t capacity;
    size_t used;
    bool full;
    uint8_t spare;
};

void UseSpare(FixedDestination* out) {
    out->full = true;
    out->manager.next_output_byte = &out->spare;
    out->manager.free_in_buffer = 1;
}

void BeginOutput(j_compress_ptr info) {
    auto* out = reinterpret_cast<FixedDestination*>(info->dest);
    out->manager.next_output_byte = out->data;
    out->manager.free_in_buffer = out->capacity;
    if (out->capacity == 0) UseSpare(out);
}

boolean OnFull(j_compress_ptr info) {
    auto* out = reinterpret_cast<FixedDestination*>(info->dest);
    if (!out->full) {
        UseSpare(out);
        return TRUE;
    }
    auto* state = reinterpret_cast<ErrorState*>(info->err);
    snprintf(state->text, sizeof(state->text), "the JPEG file does not fit into %zu bytes",
             out->capacity);
    longjmp(state->back, 1);
}

void EndOutput(j_compress_ptr info) {
    auto* out = reinterpret_cast<FixedDestination*>(info->dest);
    out->used = out->full ? out->capacity : out->capacity - out->manager.free_in_buffer;
}

/** Row pointers of one row of coded units, and the memory behind those that must be made. */
struct Rows {
    JSAMPROW y[kMcuRows];
    JSAMPROW cb[kMcuRows / 2];
    JSAMPROW cr[kMcuRows / 2];
    uint8_t* paddedY;  // kMcuRows rows of paddedWidth bytes, or null: the picture's rows serve
    size_t paddedWidth;
};

void PadRow(uint8_t* row, size_t from, size_t to) {
    for (size_t x = from; x < to; ++x) row[x] = row[from - 1];
}

/** Fills the rows from luma row `top` on; beyond the last row and column the picture repeats. */
void PrepareRows(const Nv12View& picture, uint32_t top, Rows* rows) {
    for (uint32_t i = 0; i < kMcuRows; ++i) {
        const uint32_t y = top + i < picture.height ? top + i : picture.height - 1;
        const uint8_t* source = picture.y + y * picture.strideBytes;
        rows->y[i] = const_cast<JSAMPROW>(source);
        if (rows->paddedY != nullptr) {
            rows->y[i] = rows->paddedY + i * rows->paddedWidth;
            for (uint32_t x = 0; x < picture.width; ++x) rows->y[i][x] = source[x];
            PadRow(rows->y[i], picture.width, rows->paddedWidth);
        }
    }
    for (uint32_t i = 0; i < kMcuRows / 2; ++i) {
        const uint32_t half = picture.height / 2;
        const uint32_t y = top / 2 + i < half ? top / 2 + i : half - 1;
        const uint8_t* source = picture.uv + y * picture.strideBytes;
        for (uint32_t x = 0; x < picture.width / 2; ++x) {
            rows->cb[i][x] = source[2 * x];
            rows->cr[i][x] = source[2 * x + 1];
        }
        PadRow(rows->cb[i], picture.width / 2, rows->paddedWidth / 2);
        PadRow(rows->cr[i], picture.width / 2, rows->paddedWidth / 2);
    }
}

void SetParameters(j_compress_ptr info, const Nv12View& picture, int quality) {
    info->image_width = picture.width;
    info->image_height = picture.height;
    info->input_components = 3;
    info->in_color_space = JCS_YCbCr;
    jpeg_set_defaults(info);  // 4:2:0, JFIF header
    jpeg_set_quality(info, quality, TRUE);
    info->raw_data_in = TRUE;
}

/** Everything that libjpeg may jump out of: no object with a destructor lives in here. */
bool Compress(const Nv12View& picture, int quality, const uint8_t* exif, Rows* rows,
              FixedDestination* out, ErrorState* error) {
    jpeg_compress_struct info = {};
    info.err = jpeg_std_error(&error->manager);
    error->manager.error_exit = OnError;
    error->manager.emit_message = OnWarning;
    if (setjmp(error->back) != 0) {
        jpeg_destroy_compress(&info);
        return false;
    }
    jpeg_create_compress(&info);
    info.dest = &out->manager;
    SetParameters(&info, picture, quality);
    jpeg_start_compress(&info, TRUE);
    jpeg_write_marker(&info, JPEG_APP0 + 1, exif, kExifSegmentBytes);
    JSAMPARRAY planes[3] = {rows->y, rows->cb, rows->cr};
    while (info.next_scanline < info.image_height) {
        PrepareRows(picture, info.next_scanline, rows);
        jpeg_write_raw_data(&info, planes, kMcuRows);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    return true;
}

std::string Check(const Nv12View& picture, const JpegSettings& settings) {
    std::string problem = CheckNv12(picture, "picture");
    if (problem.empty() &&
        (picture.width > JPEG_MAX_DIMENSION || picture.height > JPEG_MAX_DIMENSION)) {
        problem = "picture of " + Size(picture.width, picture.height) +
                  ": a JPEG side has at most " + std::to_string(JPEG_MAX_DIMENSION) + " pixels";
    }
    if (problem.empty() && ExifOrientation(settings.orientationDegrees) == 0) {
        problem = "orientation of " + std::to_string(settings.orientationDegrees) +
                  " degrees: 0, 90, 180 and 270 are possible";
    }
    if (problem.empty() && (settings.quality < 1 || settings.quality > 100)) {
        problem = "JPEG quality " + std::to_string(settings.quality) + ": 1 to 100 are possible";
    }
    return problem;
}

}  // namespace

std::string EncodeJpeg(const Nv12View& picture, const JpegSettings& settings, uint8_t* out,
                       size_t capacity, size_t* size) {
    if (std::string problem = Check(picture, settings); !problem.empty()) return problem;

    Rows rows = {};
    rows.paddedWidth = (picture.width + kMcuRows - 1) / kMcuRows * kMcuRows;
    std::vector<uint8_t> luma(rows.paddedWidth == picture.width ? 0 : kMcuRows * rows.paddedWidth);
    rows.paddedY = luma.empty() ? nullptr : luma.data();
    std::vector<uint8_t> chroma(kMcuRows * rows.paddedWidth / 2);
    for (uint32_t i = 0; i < kMcuRows / 2; ++i) {
        rows.cb[i] = chroma.data() + 2 * i * (rows.paddedWidth / 2);
        rows.cr[i] = rows.cb[i] + rows.paddedWidth / 2;
    }

    const auto exif = MakeExifSegment(ExifOrientation(settings.orientationDegrees));
    FixedDestination destination = {};
    destination.manager.init_destination = BeginOutput;
    destination.manager.empty_output_buffer = OnFull;
    destination.manager.term_destination = EndOutput;
    destination.data = out;
    destination.capacity = capacity;
    ErrorState error = {};
    if (!Compress(picture, settings.quality, exif.data(), &rows, &destination, &error)) {
        return error.text;
    }
    *size = destination.used;
    return {};
}

}  // namespace imaging
