// Helpers of the offlineframes tests: folders of their own, pictures with known pixels.
#pragma once

#include <gtest/gtest.h>
#include <imaging/jpeg.h>

#include <filesystem>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/tools/offlineframes/frame_encoder.h"
#include "host/tools/offlineframes/picture_file.h"
#include "tests/support/temporary_folder.h"

namespace offlineframes {

// A folder of one test with files in it.
class TestFolder : public TemporaryFolder {
  public:
    TestFolder() : TemporaryFolder("offlineframes") {}

    // Writes `bytes` and gives the file's path.
    std::string File(const std::string& name, const Bytes& bytes) const {
        EXPECT_TRUE(WriteFile(Path(name), bytes).Ok());
        return Path(name);
    }
    std::set<std::string> Names() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(Path())) {
            names.insert(entry.path().filename().string());
        }
        return names;
    }
};

// The value of what must have worked; where it has not, a failure that says why.
template <class T>
T ValueOf(base::Result<T> result) {
    EXPECT_TRUE(result.Ok()) << result.Error();
    return result.Ok() ? std::move(result).Value() : T();
}

// Why something was refused.
template <class T>
std::string ErrorOf(const base::Result<T>& result) {
    return result.Ok() ? "no error" : result.Error();
}

// A smooth picture in which every place and channel differs: x to red, y to green.
inline Picture GradientPicture(uint32_t width, uint32_t height) {
    Picture picture({width, height});
    for (uint32_t y = 0; y < height; ++y) {
        for (uint32_t x = 0; x < width; ++x) {
            uint8_t* const pixel = picture.Pixel(x, y);
            pixel[0] = static_cast<uint8_t>(40 + x * 180 / width);
            pixel[1] = static_cast<uint8_t>(40 + y * 180 / height);
            pixel[2] = static_cast<uint8_t>(60 + (x + y) * 60 / (width + height));
        }
    }
    return picture;
}

inline Picture FlatPicture(uint32_t width, uint32_t height, Colour colour) {
    Picture picture({width, height});
    const uint8_t channels[] = {colour.r, colour.g, colour.b};
    for (size_t i = 0; i < picture.rgb.size(); ++i) picture.rgb[i] = channels[i % 3];
    return picture;
}

inline Bytes PngBytes(const Picture& picture) {
    return EncodePng(picture, RowsOf(picture));
}

// A JPEG as the camera service writes it, of a picture with even sides.
inline Bytes JpegBytes(const Picture& picture, int orientationDegrees) {
    const uint32_t w = picture.width;
    const uint32_t h = picture.height;
    const Bytes nv12 = EncodeNv12(picture, {FrameFormat::kNv12, {w, h}, w, h}, {});
    Bytes jpeg(size_t{w} * h * 3 + 4096);
    const imaging::Nv12View view = {nv12.data(), nv12.data() + size_t{w} * h, w, h, w};
    jpeg.resize(
            ValueOf(imaging::EncodeJpeg(view, {95, orientationDegrees}, jpeg.data(), jpeg.size())));
    return jpeg;
}

}  // namespace offlineframes
