// Picture: what a person sees. Read from PNG, JPEG and PPM, told by content; written as PNG; fitted
// into frames, cut and compared.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "file_io.h"

namespace offlineframes {

struct PictureSize {
    uint32_t width = 0;
    uint32_t height = 0;
};
inline bool operator==(const PictureSize& a, const PictureSize& b) {
    return a.width == b.width && a.height == b.height;
}
std::string Describe(PictureSize size);  // "4096x3072"

// Largest side of a picture or frame that is read or made, in pixels: cairo draws no larger one.
inline constexpr uint32_t kMaxSide = 32767;
// Largest picture, in pixels: reading one takes six bytes a pixel. Cameras of 100 megapixels have
// 102 million.
inline constexpr uint64_t kMaxPixels = 105'000'000;

inline bool IsUsableSize(uint64_t width, uint64_t height) {
    return width >= 1 && height >= 1 && width <= kMaxSide && height <= kMaxSide &&
           width * height <= kMaxPixels;
}

// 8-bit RGB in display (sRGB-like) values.
struct Picture : PictureSize {
    std::vector<uint8_t> rgb;  // width * height * 3 bytes, top row first

    explicit Picture(PictureSize size = {})
        : PictureSize(size), rgb(size_t{size.width} * size.height * 3) {}

    uint8_t* Pixel(uint32_t x, uint32_t y) { return &rgb[(size_t{y} * width + x) * 3]; }
    const uint8_t* Pixel(uint32_t x, uint32_t y) const { return &rgb[(size_t{y} * width + x) * 3]; }
};

// What the first bytes of a file tell: "PNG", "JPEG", "PPM", or "" for anything else.
std::string PictureType(const Bytes& bytes);

// A picture as its file holds it.
struct StoredPicture {
    Picture picture;       // not yet turned upright
    PictureSize fullSize;  // of the picture when it is not reduced
    int orientation = 1;   // EXIF 1 to 8
    size_t jpegBytes = 0;  // of a JPEG, up to and with its end marker
};

// Decodes the bytes of the file `path` as 8-bit RGB; what is transparent becomes white, as on
// paper. A damaged picture is an error, as is a JPEG without its end marker; so is a too large one,
// before it is decoded. Bytes after the end marker are ignored.
// With `leastWidth`, a JPEG is reduced in eighths while it stays at least that wide; that costs a
// fraction of the time.
Result<StoredPicture> DecodePicture(const Bytes& bytes, const std::string& path,
                                    uint32_t leastWidth = 0);

// The same, turned upright.
Result<Picture> ReadPicture(const std::string& path);

// Turns and mirrors a picture stored with this EXIF orientation.
Picture MakeUpright(Picture picture, int orientation);

// What FitPicture() scales by: output pixels per pixel of `photo`.
double CoveringScale(PictureSize photo, PictureSize size);

// Scales `photo` until it covers `size` and cuts the overhang off evenly on both sides. A photo
// that shrinks is averaged over areas, so that fine detail does not alias.
Picture FitPicture(const Picture& photo, PictureSize size);

// Writes the RGB bytes of row `y`; called for each row once, from the top. (A dump becomes a PNG
// without a whole picture in memory: filling fresh pages took a third of the time.)
using RowSource = std::function<void(uint32_t y, uint8_t* rgb)>;
RowSource RowsOf(Picture picture);

Bytes EncodePng(PictureSize size, const RowSource& rows);

// The middle `size` pixels of `picture`, on an even offset. `size` must not be larger.
Picture CentreCrop(const Picture& picture, PictureSize size);

struct Comparison {
    // Peak signal to noise ratio in dB, peak 255; infinity for equal channels.
    std::array<double, 3> channelPsnr;  // red, green, blue
    double psnr;                        // over all samples
    // The largest difference of one sample: the first in reading order.
    int largest = 0;
    uint32_t x = 0;
    uint32_t y = 0;
    int channel = 0;
};

// How much two pictures differ. Fails, naming both sizes, when they are not of one size.
Result<Comparison> ComparePictures(const Picture& a, const Picture& b);

}  // namespace offlineframes
