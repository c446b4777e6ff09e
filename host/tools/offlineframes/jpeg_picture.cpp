// JPEG reading through libjpeg. Its errors arrive as long jumps, so the code that can be jumped
// over lives in small functions that hold no C++ objects.

#include <setjmp.h>
#include <stddef.h>
#include <stdio.h>
// jpeglib.h uses FILE and size_t without including what defines them.
#include <jpeglib.h>

#include "exif_orientation.h"
#include "picture_file.h"

namespace offlineframes {
namespace {

struct Decoder {
    jpeg_decompress_struct info;
    jpeg_error_mgr errors;
    jmp_buf escape;
    char message[JMSG_LENGTH_MAX];
};

Decoder* decoderOf(j_common_ptr info) {
    return static_cast<Decoder*>(info->client_data);
}

void onError(j_common_ptr info) {
    Decoder* const decoder = decoderOf(info);
    info->err->format_message(info, decoder->message);
    longjmp(decoder->escape, 1);
}

// Warnings (level below 0) mean damaged data: the decoder would go on with invented pixels.
void onMessage(j_common_ptr info, int level) {
    if (level < 0) onError(info);
}

void begin(Decoder* decoder, const Bytes& bytes) {
    decoder->info.err = jpeg_std_error(&decoder->errors);
    decoder->info.client_data = decoder;
    decoder->errors.error_exit = onError;
    decoder->errors.emit_message = onMessage;
    decoder->message[0] = 0;
    if (setjmp(decoder->escape) != 0) return;
    jpeg_create_decompress(&decoder->info);
    jpeg_mem_src(&decoder->info, bytes.data(), bytes.size());
    jpeg_save_markers(&decoder->info, JPEG_APP0 + 1, 0xFFFF);
}

// Sets the output's size from the header's.
void reduce(Decoder* decoder, uint32_t leastWidth) {
    jpeg_decompress_struct& info = decoder->info;
    info.scale_num = info.scale_denom = 8;
    while (leastWidth != 0 && info.scale_num > 1 &&
           uint64_t{info.image_width} * (info.scale_num - 1) >= uint64_t{leastWidth} * 8) {
        --info.scale_num;
    }
    jpeg_calc_output_dimensions(&info);
}

// After it the picture's size and markers are known. False: see message.
bool readHeader(Decoder* decoder, uint32_t leastWidth) {
    if (setjmp(decoder->escape) != 0) return false;
    jpeg_read_header(&decoder->info, TRUE);
    decoder->info.out_color_space = JCS_RGB;
    decoder->info.dct_method = JDCT_ISLOW;
    reduce(decoder, leastWidth);
    return true;
}

// Fills output width x height x 3 bytes. False: see message.
bool readPixels(Decoder* decoder, uint8_t* rgb) {
    if (setjmp(decoder->escape) != 0) return false;
    jpeg_start_decompress(&decoder->info);
    const size_t row = size_t{decoder->info.output_width} * 3;
    while (decoder->info.output_scanline < decoder->info.output_height) {
        JSAMPROW line = rgb + decoder->info.output_scanline * row;
        jpeg_read_scanlines(&decoder->info, &line, 1);
    }
    jpeg_finish_decompress(&decoder->info);
    return true;
}

int orientationOf(const Decoder& decoder) {
    for (jpeg_saved_marker_ptr marker = decoder.info.marker_list; marker; marker = marker->next) {
        const int orientation = exifOrientation(marker->data, marker->data_length);
        if (orientation != 1) return orientation;
    }
    return 1;
}

}  // namespace

Result<JpegPicture> decodeJpeg(const Bytes& bytes, const std::string& name, uint32_t leastWidth) {
    Decoder decoder = {};
    begin(&decoder, bytes);
    if (!readHeader(&decoder, leastWidth)) {
        jpeg_destroy_decompress(&decoder.info);
        return Failure{name + ": damaged JPEG: " + decoder.message};
    }
    const uint32_t width = decoder.info.image_width;
    const uint32_t height = decoder.info.image_height;
    if (!isUsableSize(width, height)) {
        jpeg_destroy_decompress(&decoder.info);
        return Failure{name + ": a JPEG of " + std::to_string(width) + "x" +
                       std::to_string(height) + " is too large"};
    }
    JpegPicture jpeg;
    jpeg.orientation = orientationOf(decoder);  // the markers are gone once the pixels are read
    jpeg.width = width;
    jpeg.height = height;
    jpeg.picture = Picture(decoder.info.output_width, decoder.info.output_height);
    const bool ok = readPixels(&decoder, jpeg.picture.rgb.data());
    if (ok) jpeg.jpegBytes = bytes.size() - decoder.info.src->bytes_in_buffer;
    jpeg_destroy_decompress(&decoder.info);
    if (!ok) return Failure{name + ": damaged JPEG: " + decoder.message};
    return jpeg;
}

}  // namespace offlineframes
