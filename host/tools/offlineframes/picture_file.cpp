// Chooses the reader of a picture by its content.

#include "picture_file.h"

#include <string.h>

#include "exif_orientation.h"

namespace offlineframes {
namespace {

bool startsWith(const Bytes& bytes, const char* magic, size_t length) {
    return bytes.size() >= length && memcmp(bytes.data(), magic, length) == 0;
}

}  // namespace

Result<PictureType> pictureType(const Bytes& bytes, const std::string& name) {
    if (startsWith(bytes, "\x89PNG\r\n\x1a\n", 8)) return PictureType::kPng;
    if (startsWith(bytes, "\xff\xd8\xff", 3)) return PictureType::kJpeg;
    if (startsWith(bytes, "P6", 2)) return PictureType::kPpm;
    return Failure{name + ": is not a PNG, JPEG or binary PPM picture"};
}

Result<Picture> decodePicture(const Bytes& bytes, const std::string& name) {
    const Result<PictureType> type = pictureType(bytes, name);
    if (!type.ok()) return type.failure();
    switch (type.value()) {
        case PictureType::kPng:
            return decodePng(bytes, name);
        case PictureType::kPpm:
            return decodePpm(bytes, name);
        case PictureType::kJpeg:
            break;
    }
    Result<JpegPicture> jpeg = decodeJpeg(bytes, name);
    if (!jpeg.ok()) return jpeg.failure();
    const int orientation = jpeg.value().orientation;
    return makeUpright(std::move(jpeg).value().picture, orientation);
}

Result<Picture> readPicture(const std::string& path) {
    const Result<Bytes> bytes = readFile(path);
    if (!bytes.ok()) return bytes.failure();
    return decodePicture(bytes.value(), path);
}

}  // namespace offlineframes
