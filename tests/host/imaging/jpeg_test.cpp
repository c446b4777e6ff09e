// JPEG files read back with TurboJPEG.
#include <gmock/gmock.h>
#include <imaging/jpeg.h>
#include <turbojpeg.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include "frames.h"

namespace imaging {

using testing::HasSubstr;

namespace {

// Soft luma waves and chroma that changes from left to right, all the way to the edges.
void Paint(Nv12Picture& picture) {
    const MutableNv12View view = picture.View();
    for (uint32_t y = 0; y < view.height; ++y) {
        for (uint32_t x = 0; x < view.width; ++x) {
            view.y[y * view.strideBytes + x] =
                    static_cast<uint8_t>(128 + 100 * std::sin(x * 0.2) * std::cos(y * 0.15));
            view.uv[y / 2 * view.strideBytes + x] = static_cast<uint8_t>(
                    x % 2 == 0 ? 60 + 60 * x / view.width : 200 - 120 * (y / 2) / view.height);
        }
    }
}

std::vector<uint8_t> Encode(Nv12Picture& picture, int32_t degrees, uint32_t threads = 2) {
    std::vector<uint8_t> file(1000000);
    const auto size = EncodeJpeg(picture.View(), {kJpegQuality, degrees}, file.data(), file.size(),
                                 {threads, FastestInstructionSet()});
    EXPECT_TRUE(size.Ok());
    file.resize(size.Ok() ? size.Value() : 0);
    return file;
}

// The least peak signal-to-noise ratio of a component of the picture in `file`, in dB.
double LeastPsnr(const Nv12Picture& picture, const std::vector<uint8_t>& file) {
    const int width = static_cast<int>(picture.width);
    const int height = static_cast<int>(picture.height);
    int size[3] = {};  // width, height, subsampling
    const std::unique_ptr<void, int (*)(tjhandle)> decoder(tjInitDecompress(), tjDestroy);
    EXPECT_EQ(tjDecompressHeader2(decoder.get(), const_cast<uint8_t*>(file.data()), file.size(),
                                  &size[0], &size[1], &size[2]),
              0);
    EXPECT_THAT(size, testing::ElementsAre(width, height, TJSAMP_420));
    std::vector<uint8_t> decoded(picture.width * picture.height * 3 / 2);  // Y, Cb, Cr
    EXPECT_EQ(tjDecompressToYUV2(decoder.get(), file.data(), file.size(), decoded.data(), width, 1,
                                 height, TJFLAG_STOPONWARNING),
              0)
            << tjGetErrorStr2(decoder.get());
    const uint8_t* sample = decoded.data();
    double least = 1000;
    for (const auto original : {&Nv12Picture::Y, &Nv12Picture::Cb, &Nv12Picture::Cr}) {
        const uint32_t step = original == &Nv12Picture::Y ? 1 : 2;
        double sum = 1e-9;
        for (uint32_t y = 0; y < picture.height; y += step) {
            for (uint32_t x = 0; x < picture.width; x += step) {
                const int difference = (picture.*original)(x, y) - *sample++;
                sum += difference * difference;
            }
        }
        const double count = picture.width * picture.height / (step * step);
        least = std::min(least, 10 * std::log10(255.0 * 255.0 * count / sum));
    }
    return least;
}

}  // namespace

TEST(EncodeJpeg, ThePictureComesBackAtEverySize) {
    // Whole coded units, then sizes that end inside one; one strip, then some, the last
    // short, and more than there are restart markers.
    for (const auto& [width, height] :
         {std::pair(64u, 48u), {50u, 38u}, {2u, 2u}, {32u, 512u}, {34u, 514u}, {16u, 2400u}}) {
        Nv12Picture picture(width, height);
        Paint(picture);
        EXPECT_GT(LeastPsnr(picture, Encode(picture, 0)), 40) << width << " x " << height;
    }
}

TEST(EncodeJpeg, IsTheSameWhateverTheThreads) {
    // 2400 rows are 9 strips and a part.
    Nv12Picture picture(24, 2400);
    Paint(picture);
    const std::vector<uint8_t> file = Encode(picture, 90, 1);
    for (uint32_t threads : {0u, 2u, 3u, 40u}) EXPECT_EQ(Encode(picture, 90, threads), file);
}

TEST(EncodeJpeg, AFileThatDoesNotFitIsAnErrorAndStaysInside) {
    Nv12Picture picture(64, 48);
    Paint(picture);
    const size_t needed = Encode(picture, 0).size();
    std::vector<uint8_t> file(needed, 0x5a);
    for (size_t capacity : {size_t{0}, size_t{700}, needed - 1}) {
        EXPECT_THAT(EncodeJpeg(picture.View(), {}, file.data(), capacity).Error(),
                    HasSubstr("fit into " + std::to_string(capacity) + " bytes"));
        EXPECT_EQ(std::count(file.begin() + capacity, file.end(), 0x5a), needed - capacity);
    }
    EXPECT_TRUE(EncodeJpeg(picture.View(), {}, file.data(), needed).Ok());
}

}  // namespace imaging
