// PNG through libpng's simplified interface, which needs no long jumps on our side.

#include <png.h>
#include <string.h>

#include "picture_file.h"

namespace offlineframes {

Result<Picture> decodePng(const Bytes& bytes, const std::string& name) {
    png_image image;
    memset(&image, 0, sizeof(image));
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&image, bytes.data(), bytes.size())) {
        return Failure{name + ": damaged PNG: " + image.message};
    }
    if (!isUsableSize(image.width, image.height)) {
        const std::string size = std::to_string(image.width) + "x" + std::to_string(image.height);
        png_image_free(&image);
        return Failure{name + ": a PNG of " + size + " is too large"};
    }
    image.format = PNG_FORMAT_RGB;
    Picture picture(image.width, image.height);
    const png_color black = {0, 0, 0};
    const int ok = png_image_finish_read(&image, &black, picture.rgb.data(),
                                         static_cast<png_int_32>(picture.width * 3), nullptr);
    const std::string message = image.message;
    png_image_free(&image);
    if (!ok) return Failure{name + ": damaged PNG: " + message};
    return picture;
}

Result<Bytes> encodePng(const Picture& picture, const std::string& name) {
    png_image image;
    memset(&image, 0, sizeof(image));
    image.version = PNG_IMAGE_VERSION;
    image.width = picture.width;
    image.height = picture.height;
    image.format = PNG_FORMAT_RGB;
    image.flags = PNG_IMAGE_FLAG_FAST;  // a dump is looked at once; speed before size
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    Bytes bytes(size);
    const int ok = png_image_write_to_memory(&image, bytes.data(), &size, 0, picture.rgb.data(),
                                             static_cast<png_int_32>(picture.width * 3), nullptr);
    const std::string message = image.message;
    png_image_free(&image);
    if (!ok) return Failure{name + ": cannot make the PNG: " + message};
    bytes.resize(size);
    return bytes;
}

}  // namespace offlineframes
