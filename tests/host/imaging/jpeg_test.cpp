// JPEG files read back with libjpeg.
#include <gmock/gmock.h>
#include <imaging/jpeg.h>
#include <jpeglib.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "frames.h"

namespace imaging {

using testing::HasSubstr;

namespace {

struct Decoded {
    uint32_t width = 0;
    uint32_t height = 0;
    std::vector<uint8_t> yCbCr;  // three bytes a pixel
};

// Reads a whole file; libjpeg ends the process at a broken one, which fails the test.
Decoded Decode(const std::vector<uint8_t>& file) {
    jpeg_error_mgr error;
    jpeg_decompress_struct info;
    info.err = jpeg_std_error(&error);
    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, file.data(), file.size());
    jpeg_read_header(&info, TRUE);
    Decoded out;
    out.width = info.image_width;
    out.height = info.image_height;
    info.out_color_space = JCS_YCbCr;
    jpeg_start_decompress(&info);
    out.yCbCr.resize(size_t{out.width} * out.height * 3);
    while (info.output_scanline < info.output_height) {
        JSAMPROW row = &out.yCbCr[size_t{info.output_scanline} * out.width * 3];
        jpeg_read_scanlines(&info, &row, 1);
    }
    jpeg_finish_decompress(&info);
    EXPECT_EQ(error.num_warnings, 0);
    jpeg_destroy_decompress(&info);
    return out;
}

// Soft luma waves and chroma that changes from left to right, all the way to the edges.
void Paint(Nv12Picture& picture) {
    const MutableNv12View view = picture.View();
    for (uint32_t y = 0; y < view.height; ++y) {
        for (uint32_t x = 0; x < view.width; ++x) {
            view.y[y * view.strideBytes + x] =
                    static_cast<uint8_t>(128 + 100 * std::sin(x * 0.2) * std::cos(y * 0.15));
        }
    }
    for (uint32_t y = 0; y < view.height / 2; ++y) {
        for (uint32_t x = 0; x < view.width / 2; ++x) {
            uint8_t* pair = view.uv + y * view.strideBytes + 2 * x;
            pair[0] = static_cast<uint8_t>(60 + 120 * x / view.width);
            pair[1] = static_cast<uint8_t>(200 - 120 * y / view.height);
        }
    }
}

std::vector<uint8_t> Encode(Nv12Picture& picture, int32_t degrees, uint32_t threads = 2) {
    std::vector<uint8_t> file(1000000);
    size_t size = 0;
    JpegSettings settings;
    settings.orientationDegrees = degrees;
    EXPECT_EQ(EncodeJpeg(picture.View(), settings, file.data(), file.size(), &size,
                         {threads, FastestInstructionSet()}),
              "");
    file.resize(size);
    return file;
}

// Peak signal-to-noise ratio of one component, in dB.
double Psnr(const Nv12Picture& picture, const Decoded& decoded, int component) {
    double sum = 0;
    for (uint32_t y = 0; y < picture.height; ++y) {
        for (uint32_t x = 0; x < picture.width; ++x) {
            const int original = component == 0   ? picture.Y(x, y)
                                 : component == 1 ? picture.Cb(x, y)
                                                  : picture.Cr(x, y);
            const double difference =
                    original - decoded.yCbCr[(size_t{y} * picture.width + x) * 3 + component];
            sum += difference * difference;
        }
    }
    return 10 * std::log10(255.0 * 255.0 * picture.width * picture.height / (sum + 1e-9));
}

}  // namespace

TEST(EncodeJpeg, ThePictureComesBackAtEverySize) {
    // Whole coded units, then sizes that end inside one; one strip, then some, the last short.
    for (const auto& [width, height] :
         {std::pair(64u, 48u), std::pair(50u, 38u), std::pair(2u, 2u), std::pair(72u, 40u),
          std::pair(32u, 512u), std::pair(34u, 514u), std::pair(16u, 2400u)}) {
        Nv12Picture picture(width, height);
        Paint(picture);
        const Decoded decoded = Decode(Encode(picture, 0));
        EXPECT_EQ(decoded.width, width);
        EXPECT_EQ(decoded.height, height);
        EXPECT_GT(Psnr(picture, decoded, 0), 42) << width;
        EXPECT_GT(Psnr(picture, decoded, 1), 38) << width;
        EXPECT_GT(Psnr(picture, decoded, 2), 38) << width;
    }
}

TEST(EncodeJpeg, StripsMeetAtRestartMarkersWhateverTheThreads) {
    // 2400 rows are 9 strips and a part: the markers begin anew after the eighth.
    Nv12Picture picture(24, 2400);
    Paint(picture);
    const std::vector<uint8_t> file = Encode(picture, 90, 1);
    std::vector<int> restarts;
    for (size_t i = 0; i + 1 < file.size(); ++i) {
        if (file[i] == 0xff && file[i + 1] >= 0xd0 && file[i + 1] <= 0xd7) {
            restarts.push_back(file[i + 1] - 0xd0);
        }
    }
    EXPECT_THAT(restarts, testing::ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 0));
    const uint8_t interval[] = {0xff, 0xdd, 0, 4, 0, 2 * 16};  // two coded units across, 16 down
    EXPECT_NE(std::search(file.begin(), file.end(), std::begin(interval), std::end(interval)),
              file.end());
    for (uint32_t threads : {0u, 2u, 3u, 40u}) EXPECT_EQ(Encode(picture, 90, threads), file);
}

TEST(EncodeJpeg, AFileThatDoesNotFitIsAnErrorAndStaysInside) {
    Nv12Picture picture(64, 48);
    Paint(picture);
    const size_t needed = Encode(picture, 0).size();
    for (size_t capacity : {size_t{0}, size_t{1}, size_t{700}, needed - 1}) {
        std::vector<uint8_t> file(needed, 0x5a);
        size_t size = 12345;
        EXPECT_THAT(EncodeJpeg(picture.View(), {}, file.data(), capacity, &size),
                    HasSubstr("fit into " + std::to_string(capacity) + " bytes"));
        EXPECT_EQ(size, 12345u);
        EXPECT_EQ(std::count(file.begin() + capacity, file.end(), 0x5a), needed - capacity);
    }
    std::vector<uint8_t> exact(needed);
    size_t size = 0;
    EXPECT_EQ(EncodeJpeg(picture.View(), {}, exact.data(), needed, &size), "");
    EXPECT_EQ(size, needed);
}

TEST(EncodeJpeg, ImpossibleSettingsAreNamed) {
    Nv12Picture picture(16, 16);
    std::vector<uint8_t> file(10000);
    size_t size = 0;
    EXPECT_THAT(EncodeJpeg(picture.View(), {95, 45}, file.data(), file.size(), &size),
                HasSubstr("45 degrees"));
    EXPECT_THAT(EncodeJpeg(picture.View(), {0, 0}, file.data(), file.size(), &size),
                HasSubstr("quality 0"));
    Nv12View odd = picture.View();
    odd.width = 15;
    EXPECT_THAT(EncodeJpeg(odd, {}, file.data(), file.size(), &size), HasSubstr("15 x 16"));
}

}  // namespace imaging
