// Decodes a whole JPEG with libjpeg and reads its EXIF orientation.

#include "tests/end_to_end/jpeg_fields.h"

#include <jpeglib.h>
#include <stdio.h>

namespace end_to_end {
namespace {

// The orientation in a TIFF directory, which begins after "Exif\0\0"; -1 where the block ends early
// or the entry is not one 16-bit number.
int orientationIn(const std::string& tiff) {
    const bool little = tiff.compare(0, 2, "II") == 0;
    bool outside = false;
    const auto number = [&](size_t at, size_t count) {
        size_t value = 0;
        for (size_t i = 0; i < count; ++i) {
            const size_t place = at + (little ? count - 1 - i : i);
            outside |= place >= tiff.size();
            value = value * 256 + (outside ? 0 : static_cast<unsigned char>(tiff[place]));
        }
        return value;
    };
    constexpr size_t kEntryBytes = 12, kOrientationTag = 0x0112, kShort = 3;
    const size_t directory = number(4, 4);
    const size_t end = directory + 2 + number(directory, 2) * kEntryBytes;
    int orientation = 0;
    for (size_t entry = directory + 2; entry < end && !outside; entry += kEntryBytes) {
        if (number(entry, 2) != kOrientationTag) continue;
        const bool oneShort = number(entry + 2, 2) == kShort && number(entry + 4, 4) == 1;
        orientation = oneShort ? static_cast<int>(number(entry + 8, 2)) : -1;
    }
    return outside || number(2, 2) != 42 ? -1 : orientation;
}

}  // namespace

// libjpeg ends the process at a file that it cannot read at all, which fails the test.
JpegFields readJpegFields(const std::string& file) {
    JpegFields fields;
    jpeg_error_mgr error;
    jpeg_decompress_struct info;
    info.err = jpeg_std_error(&error);
    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, reinterpret_cast<const unsigned char*>(file.data()), file.size());
    jpeg_save_markers(&info, JPEG_APP0 + 1, 0xFFFF);
    jpeg_read_header(&info, TRUE);
    if (info.saw_JFIF_marker) fields.jfifMajor = info.JFIF_major_version;
    for (auto* marker = info.marker_list; marker != nullptr; marker = marker->next) {
        const std::string bytes(reinterpret_cast<const char*>(marker->data), marker->data_length);
        const std::string exif("Exif\0\0", 6);
        if (bytes.compare(0, exif.size(), exif) == 0) {
            fields.orientation = orientationIn(bytes.substr(exif.size()));
        }
    }
    fields.width = static_cast<int>(info.image_width);
    fields.height = static_cast<int>(info.image_height);
    for (int i = 0; i < info.num_components; ++i) {
        const jpeg_component_info& component = info.comp_info[i];
        fields.samplings.push_back(component.h_samp_factor * 16 + component.v_samp_factor);
    }
    jpeg_start_decompress(&info);
    std::vector<unsigned char> bytes(size_t{info.output_width} * 3);
    for (JSAMPROW row = bytes.data(); info.output_scanline < info.output_height;) {
        jpeg_read_scanlines(&info, &row, 1);
    }
    jpeg_finish_decompress(&info);
    if (error.num_warnings > 0) fields.problem = "libjpeg warns of its content";
    if (info.src->bytes_in_buffer > 0) fields.problem = "bytes after the end marker";
    jpeg_destroy_decompress(&info);
    return fields;
}

}  // namespace end_to_end
