// Pictures: the right pixels from good files, a clear error from bad ones, fitted and compared.

#include <gmock/gmock.h>
#include <isa-l/crc.h>
#include <turbojpeg.h>

#include "host/tools/offlineframes/picture_file.h"
#include "test_support.h"

namespace offlineframes {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

Bytes bytesOf(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

int largestDifference(const Picture& a, const Picture& b) {
    return valueOf(ComparePictures(a, b)).largest;
}

TEST(Png, ComesBackAsItWasWrittenAndUpright) {
    const TestFolder folder;
    const Picture picture = gradientPicture(37, 21);
    Bytes png = EncodePng({37, 21}, RowsOf(picture));
    EXPECT_EQ(valueOf(ReadPicture(folder.file("a", png))).rgb, picture.rgb);
    // The same with an orientation of 6, in a chunk of its own behind the header.
    std::string chunk(
            "\0\0\0\x1a"
            "eXIfMM\0*\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\x06\0\0\0\0\0\0",
            34);
    const uint32_t sum = crc32_gzip_refl(0, bytesOf(chunk).data() + 4, 30);
    for (int shift = 24; shift >= 0; shift -= 8) chunk += static_cast<char>(sum >> shift);
    png.insert(png.begin() + 33, chunk.begin(), chunk.end());
    const Picture turned = valueOf(ReadPicture(folder.file("b", png)));
    EXPECT_EQ(turned.rgb, MakeUpright(picture, 6).rgb);
    EXPECT_EQ(turned.width, 21u);
}

TEST(Ppm, OfBothDepthsAndWithComments) {
    const TestFolder folder;
    EXPECT_THAT(valueOf(ReadPicture(folder.file("a", bytesOf("P6 # a\n2 1 #b\n255\nABCDEF")))).rgb,
                ElementsAre('A', 'B', 'C', 'D', 'E', 'F'));
    const std::string deep("P6\n1 1\n1000\n\0\0\1\xF4\x03\xE8", 18);  // 0, 500 and 1000
    EXPECT_THAT(valueOf(ReadPicture(folder.file("b", bytesOf(deep)))).rgb,
                ElementsAre(0, testing::AnyOf(127, 128), 255));
}

TEST(Jpeg, EndsAtItsEndMarkerWhateverFollows) {
    const Bytes clean = jpegBytes(gradientPicture(64, 48), 0);
    const JpegPicture expected = valueOf(DecodeJpeg(clean, "x"));
    EXPECT_EQ(expected.jpegBytes, clean.size());
    // Zeros, another end marker, a whole second picture.
    for (const Bytes& junk : {Bytes(5000, 0), Bytes{0xFF, 0xD9, 0xFF, 0xD9}, clean}) {
        Bytes longer = clean;
        longer.insert(longer.end(), junk.begin(), junk.end());
        const JpegPicture read = valueOf(DecodeJpeg(longer, "x"));
        EXPECT_EQ(read.jpegBytes, clean.size());
        EXPECT_EQ(read.picture.rgb, expected.picture.rgb);
    }
    const JpegPicture reduced = valueOf(DecodeJpeg(clean, "x", 20));
    EXPECT_EQ(reduced.picture.width, 24u);  // three eighths
    EXPECT_EQ(reduced.fullSize.width, 64u);
}

TEST(Jpeg, OfInksIsRead) {
    const Bytes inks = {255, 128, 0, 255, 255, 255, 255, 64};  // 255: no ink
    unsigned char* file = nullptr;
    unsigned long size = 0;
    const tjhandle encoder = tjInitCompress();
    ASSERT_EQ(
            tjCompress2(encoder, inks.data(), 2, 0, 1, TJPF_CMYK, &file, &size, TJSAMP_444, 100, 0),
            0);
    const Picture read = valueOf(DecodeJpeg(Bytes(file, file + size), "x")).picture;
    tjFree(file);
    tjDestroy(encoder);
    Picture expected(2, 1);
    expected.rgb = {255, 128, 0, 64, 64, 64};
    EXPECT_LE(largestDifference(read, expected), 3);
}

TEST(Pictures, DamagedOrHugeOnesAreErrorsThatNameTheFile) {
    const TestFolder folder;
    const Bytes png = EncodePng({37, 21}, RowsOf(gradientPicture(37, 21)));
    const Bytes jpeg = jpegBytes(gradientPicture(64, 48), 0);
    for (size_t length = 8; length < png.size() - 12; length += 7) {
        const std::string path = folder.file("cut", Bytes(png.begin(), png.begin() + length));
        ASSERT_THAT(errorOf(ReadPicture(path)), HasSubstr(path + ": damaged PNG")) << length;
    }
    for (size_t length = 3; length + 2 <= jpeg.size(); length += 11) {
        const std::string path = folder.file("cut", Bytes(jpeg.begin(), jpeg.begin() + length));
        ASSERT_THAT(errorOf(ReadPicture(path)), HasSubstr(path + ": damaged JPEG")) << length;
    }
    Bytes wrong = jpeg;
    wrong[jpeg.size() - 40] = 0xFF;  // an end marker inside the coded data
    wrong[jpeg.size() - 39] = 0xD9;
    EXPECT_THAT(errorOf(ReadPicture(folder.file("x", wrong))), HasSubstr("damaged JPEG"));
    Bytes large = png;
    large[18] = large[22] = 0xFF;  // sides of 65,000 and some
    for (size_t i = 0; i < 4; ++i) {
        large[29 + i] = static_cast<uint8_t>(crc32_gzip_refl(0, &large[12], 17) >> (24 - 8 * i));
    }
    EXPECT_THAT(errorOf(ReadPicture(folder.file("x", large))), HasSubstr("is too large"));
    for (const char* text : {"P6", "P6\n2 2\n255\nxxxxxxxxxxx", "P6\n40000 40000\n255\nx", "x"}) {
        const std::string path = folder.file("x.ppm", bytesOf(text));
        EXPECT_THAT(errorOf(ReadPicture(path)), HasSubstr(path)) << text;
    }
}

TEST(FitPicture, CutsTheOverhangEvenlyWithoutShiftOrFalseBars) {
    const auto difference = [](const Picture& photo, const Picture& expected) {
        return largestDifference(FitPicture(photo, {expected.width, expected.height}), expected);
    };
    for (const PictureSize size : {PictureSize{4, 2}, {640, 480}, {6, 100}}) {
        EXPECT_EQ(difference(flatPicture(33, 470, {10, 130, 250}),
                             flatPicture(size.width, size.height, {10, 130, 250})),
                  0);
    }
    // Left and right thirds black, the middle white: a square cut holds only the middle.
    Picture wide = flatPicture(90, 30, {0, 0, 0});
    for (uint32_t i = 0; i < 900; ++i) std::fill_n(wide.Pixel(30 + i % 30, i / 30), 3, 255);
    EXPECT_EQ(difference(wide, flatPicture(30, 30, {255, 255, 255})), 0);
    EXPECT_LE(difference(gradientPicture(400, 300), gradientPicture(100, 74)), 3);
    EXPECT_LE(difference(gradientPicture(4000, 3000), gradientPicture(100, 75)), 3);
    EXPECT_LE(difference(gradientPicture(100, 76), gradientPicture(400, 304)), 3);
    // Bars finer than the result's pixels turn grey.
    Picture bars(400, 300);
    for (uint32_t i = 0; i < 60000; ++i) std::fill_n(bars.Pixel(i % 200 * 2, i / 200), 3, 255);
    EXPECT_LE(difference(bars, flatPicture(100, 75, {128, 128, 128})), 24);
}

TEST(Compare, GivesPsnrAndThePlaceOfTheLargestDifference) {
    const Picture a = flatPicture(10, 10, {100, 100, 100});
    Picture b = a;
    b.Pixel(3, 7)[1] = 90;   // the largest, in green
    b.Pixel(8, 8)[1] = 110;  // as large, but later
    b.Pixel(9, 9)[2] = 97;
    const Comparison c = valueOf(ComparePictures(a, b));
    EXPECT_THAT((std::vector<uint32_t>{uint32_t(c.largest), c.x, c.y, uint32_t(c.channel)}),
                ElementsAre(10, 3, 7, 1));
    EXPECT_TRUE(std::isinf(c.channelPsnr[0]));
    // Mean squares: green (100 + 100) / 100 = 2, blue 9 / 100, all 209 / 300.
    EXPECT_NEAR(c.channelPsnr[1], 20 * std::log10(255) - 10 * std::log10(2), 1e-9);
    EXPECT_NEAR(c.channelPsnr[2], 20 * std::log10(255) - 10 * std::log10(0.09), 1e-9);
    EXPECT_NEAR(c.psnr, 20 * std::log10(255) - 10 * std::log10(209.0 / 300), 1e-9);
}

}  // namespace
}  // namespace offlineframes
