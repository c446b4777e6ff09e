// Pictures: the right pixels from good files, a clear error from bad ones, fitted and compared.

#include <endian.h>
#include <gmock/gmock.h>
#include <isa-l/crc.h>
#include <turbojpeg.h>

#include <algorithm>
#include <cmath>
#include <tuple>

#include "host/tools/offlineframes/picture_file.h"
#include "test_support.h"

namespace offlineframes {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

Bytes BytesOf(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

int LargestDifference(const Picture& a, const Picture& b) {
    return ValueOf(ComparePictures(a, b)).largest;
}

TEST(Png, ComesBackAsItWasWrittenAndUpright) {
    const TestFolder folder;
    const Picture picture = GradientPicture(37, 21);
    Bytes png = PngBytes(picture);
    EXPECT_EQ(ValueOf(ReadPicture(folder.File("a", png))).rgb, picture.rgb);
    // The same with an orientation of 6, in a chunk of its own behind the header.
    std::string chunk(
            "\0\0\0\x1a"
            "eXIfMM\0*\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\x06\0\0\0\0\0\0",
            34);
    const uint32_t sum =
            htobe32(crc32_gzip_refl(0, reinterpret_cast<const uint8_t*>(&chunk[4]), 30));
    chunk.append(reinterpret_cast<const char*>(&sum), 4);
    png.insert(png.begin() + 33, chunk.begin(), chunk.end());
    const Picture turned = ValueOf(ReadPicture(folder.File("b", png)));
    EXPECT_EQ(turned.rgb, MakeUpright(picture, 6).rgb);
    EXPECT_EQ(turned.width, 21u);
}

TEST(MakeUpright, TurnsAndMirrorsAsExifSays) {
    Picture stored({3, 2});
    for (size_t i = 0; i < 18; ++i) stored.rgb[i] = static_cast<uint8_t>('0' + i / 3);
    const char* const kUpright[] = {"012345", "210543", "543210", "345012",
                                    "031425", "304152", "524130", "251403"};
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const Picture upright = MakeUpright(stored, orientation);
        std::string pixels;
        for (size_t i = 0; i < 18; i += 3) pixels += static_cast<char>(upright.rgb[i]);
        EXPECT_EQ(pixels, kUpright[orientation - 1]) << orientation;
        EXPECT_EQ(upright.width, orientation < 5 ? 3u : 2u) << orientation;
    }
}

TEST(Png, OfSixteenBitsIsSrgbAndTransparencyWhite) {
    const Bytes png = {137, 80,  78,  71, 13, 10,  26,  10, 0,  0,  0,   13,  73,  72,  68,
                       82,  0,   0,   0,  2,  0,   0,   0,  1,  16, 6,   0,   0,   0,   164,
                       178, 163, 201, 0,  0,  0,   17,  73, 68, 65, 84,  120, 218, 99,  112,
                       96,  128, 128, 6,  48, 248, 255, 31, 0,  23, 142, 5,   63,  177, 157,
                       25,  188, 0,   0,  0,  0,   73,  69, 78, 68, 174, 66,  96,  130};
    const TestFolder folder;
    EXPECT_THAT(ValueOf(ReadPicture(folder.File("a", png))).rgb,
                ElementsAre(255, 255, 255, 128, 128, 128));
}

TEST(Jpeg, OfInksIsRead) {
    const Bytes inks = {255, 128, 0, 255, 255, 255, 255, 64};  // 255: no ink
    unsigned char* file = nullptr;
    unsigned long size = 0;
    const tjhandle encoder = tjInitCompress();
    ASSERT_EQ(
            tjCompress2(encoder, inks.data(), 2, 0, 1, TJPF_CMYK, &file, &size, TJSAMP_444, 100, 0),
            0);
    const Picture read = ValueOf(DecodePicture(Bytes(file, file + size), "x")).picture;
    tjFree(file);
    tjDestroy(encoder);
    Picture expected({2, 1});
    expected.rgb = {255, 128, 0, 64, 64, 64};
    EXPECT_LE(LargestDifference(read, expected), 3);
}

TEST(Ppm, OfBothDepthsAndWithComments) {
    const TestFolder folder;
    EXPECT_THAT(ValueOf(ReadPicture(folder.File("a", BytesOf("P6 # a\n2 1 #b\n255\nABCDEF")))).rgb,
                ElementsAre('A', 'B', 'C', 'D', 'E', 'F'));
    const std::string deep("P6\n1 1\n1000\n\0\0\1\xF4\x03\xE8", 18);  // 0, 500 and 1000
    EXPECT_THAT(ValueOf(ReadPicture(folder.File("b", BytesOf(deep)))).rgb,
                ElementsAre(0, testing::AnyOf(127, 128), 255));
}

TEST(Jpeg, EndsAtItsEndMarkerWhateverFollows) {
    const Bytes clean = JpegBytes(GradientPicture(64, 48), 0);
    Bytes twice = clean;
    twice.insert(twice.end(), clean.begin(), clean.end());
    const StoredPicture read = ValueOf(DecodePicture(twice, "x"));
    EXPECT_EQ(read.jpegBytes, clean.size());
    EXPECT_EQ(read.picture.rgb, ValueOf(DecodePicture(clean, "x")).picture.rgb);
    const StoredPicture reduced = ValueOf(DecodePicture(clean, "x", 20));
    EXPECT_EQ(reduced.picture.width, 24u);  // three eighths
    EXPECT_EQ(reduced.fullSize.width, 64u);
}

TEST(Pictures, DamagedOrHugeOnesAreErrorsThatNameTheFile) {
    const TestFolder folder;
    const Bytes png = PngBytes(GradientPicture(37, 21));
    const Bytes jpeg = JpegBytes(GradientPicture(64, 48), 0);
    // A PNG's last chunk of 12 bytes may be missing, a JPEG's end marker may not.
    for (const auto& [whole, end, reason] : {std::tuple(&png, png.size() - 12, ": damaged PNG"),
                                             {&jpeg, jpeg.size() - 1, ": damaged JPEG"}}) {
        for (size_t length = 8; length < end; length += 9) {
            const Bytes part(whole->begin(), whole->begin() + length);
            const std::string path = folder.File("memory", part);  // which is no reason
            ASSERT_THAT(ErrorOf(ReadPicture(path)), HasSubstr(path + reason)) << length;
        }
    }
    Bytes wrong = jpeg;
    wrong[jpeg.size() - 40] = 0xFF;  // an end marker inside the coded data
    wrong[jpeg.size() - 39] = 0xD9;
    EXPECT_THAT(ErrorOf(ReadPicture(folder.File("x", wrong))), HasSubstr("damaged JPEG"));
    const std::pair<const char*, const char*> cases[] = {
            {"P6", "damaged PPM"},
            {"P6\n2 2\n255\nxxxxxxxxxxx", "damaged PPM"},
            {"P6\n40000 4\n255\nx", "40000x4 is too large: scale it down"},
            {"P6\n11000 11000\n255\nx", "11000x11000 is too large: scale it down"},
            {"x", "is not a PNG, JPEG or binary PPM"},
    };
    for (const auto& [text, reason] : cases) {
        const std::string path = folder.File("x.ppm", BytesOf(text));
        EXPECT_THAT(ErrorOf(ReadPicture(path)), AllOf(HasSubstr(path), HasSubstr(reason)));
    }
}

TEST(FitPicture, CutsTheOverhangEvenlyWithoutShiftOrFalseBars) {
    const auto difference = [](const Picture& photo, const Picture& expected) {
        return LargestDifference(FitPicture(photo, expected), expected);
    };
    const Colour colour = {10, 130, 250};
    EXPECT_EQ(difference(FlatPicture(33, 470, colour), FlatPicture(640, 480, colour)), 0);
    // Left and right thirds black, the middle white: a square cut holds only the middle.
    Picture wide = FlatPicture(90, 30, {0, 0, 0});
    for (uint32_t i = 0; i < 900; ++i) std::fill_n(wide.Pixel(30 + i % 30, i / 30), 3, 255);
    EXPECT_EQ(difference(wide, FlatPicture(30, 30, {255, 255, 255})), 0);
    EXPECT_LE(difference(GradientPicture(400, 300), GradientPicture(100, 74)), 3);
}

TEST(Compare, GivesPsnrAndThePlaceOfTheLargestDifference) {
    const Picture a = FlatPicture(10, 10, {100, 100, 100});
    Picture b = a;
    b.Pixel(3, 7)[1] = 90;  // the largest, in green
    b.Pixel(9, 9)[2] = 97;
    const Comparison c = ValueOf(ComparePictures(a, b));
    EXPECT_THAT((std::vector<uint32_t>{uint32_t(c.largest), c.x, c.y, uint32_t(c.channel)}),
                ElementsAre(10, 3, 7, 1));
    EXPECT_TRUE(std::isinf(c.channelPsnr[0]));
    // Mean squares: green 100 / 100, all (100 + 9) / 300.
    EXPECT_NEAR(c.channelPsnr[1], 20 * std::log10(255), 1e-9);
    EXPECT_NEAR(c.psnr, 20 * std::log10(255) - 10 * std::log10(109.0 / 300), 1e-9);
}

}  // namespace
}  // namespace offlineframes
