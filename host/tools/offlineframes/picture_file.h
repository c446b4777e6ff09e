// Pictures in files: PNG, JPEG and PPM read by content, PNG written.
#pragma once

#include <cstddef>
#include <string>

#include "file_io.h"
#include "picture.h"
#include "result.h"

namespace offlineframes {

enum class PictureType { kPng, kJpeg, kPpm };

// Tells the type by the first bytes. Fails, naming `name`, when it is none of the three.
Result<PictureType> pictureType(const Bytes& bytes, const std::string& name);

// Reads a PNG, JPEG or PPM file; a JPEG is turned upright by its EXIF orientation.
Result<Picture> readPicture(const std::string& path);
// The same for bytes already read; `name` stands in messages.
Result<Picture> decodePicture(const Bytes& bytes, const std::string& name);

// PNG, in png_picture.cpp. Any colour type is read as 8-bit RGB over black.
Result<Picture> decodePng(const Bytes& bytes, const std::string& name);
Result<Bytes> encodePng(const Picture& picture, const std::string& name);

// JPEG, in jpeg_picture.cpp. Bytes after the end marker are ignored; a damaged stream or one that
// ends before its end marker is an error.
struct JpegPicture {
    Picture picture;       // as stored: orientation not yet applied
    uint32_t width = 0;    // of the whole picture, pixels
    uint32_t height = 0;   // likewise
    int orientation = 1;   // EXIF 1 to 8
    size_t jpegBytes = 0;  // up to and with the end marker
};
// With `leastWidth`, `picture` is reduced in eighths while it stays at least that wide; that costs
// a fraction of the time.
Result<JpegPicture> decodeJpeg(const Bytes& bytes, const std::string& name,
                               uint32_t leastWidth = 0);

// PPM (binary, P6, 8 or 16 bits), in ppm_picture.cpp.
Result<Picture> decodePpm(const Bytes& bytes, const std::string& name);

}  // namespace offlineframes
