// Picture readers: the right pixels from good files, a clear error from damaged ones.

#include "host/tools/offlineframes/picture_file.h"

#include <gmock/gmock.h>

#include "host/tools/offlineframes/exif_orientation.h"
#include "test_support.h"

namespace offlineframes {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

Bytes bytesOf(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

TEST(Png, ComesBackAsItWasWritten) {
    const Picture picture = gradientPicture(37, 21);
    const Picture read = valueOf(decodePicture(valueOf(encodePng(picture, "x")), "x"));
    EXPECT_EQ(read.width, 37u);
    EXPECT_EQ(read.rgb, picture.rgb);
}

TEST(Png, CutShortOrDamagedIsAnErrorThatNamesTheFile) {
    const Bytes png = encodePng(gradientPicture(37, 21), "x").value();
    for (size_t length = 8; length < png.size() - 12; length += 7) {
        const Bytes cut(png.begin(), png.begin() + static_cast<ptrdiff_t>(length));
        ASSERT_THAT(errorOf(decodePicture(cut, "photo.png")), HasSubstr("photo.png: damaged PNG"))
                << length;
    }
    Bytes damaged = png;
    damaged[png.size() / 2] ^= 0x55;
    EXPECT_FALSE(decodePicture(damaged, "x").ok());
}

TEST(Jpeg, EndsAtItsEndMarkerWhateverFollows) {
    const Bytes clean = jpegBytes(gradientPicture(64, 48), 0);
    const JpegPicture expected = valueOf(decodeJpeg(clean, "x"));
    EXPECT_EQ(expected.jpegBytes, clean.size());
    // Zeros, another end marker, a whole second picture.
    for (const Bytes& junk : {Bytes(5000, 0), Bytes{0xFF, 0xD9, 0xFF, 0xD9}, clean}) {
        Bytes longer = clean;
        longer.insert(longer.end(), junk.begin(), junk.end());
        const JpegPicture read = valueOf(decodeJpeg(longer, "x"));
        EXPECT_EQ(read.jpegBytes, clean.size());
        EXPECT_EQ(read.picture.rgb, expected.picture.rgb);
    }
}

TEST(Jpeg, WithoutItsEndOrWithDamageIsAnError) {
    const Bytes clean = jpegBytes(gradientPicture(64, 48), 0);
    for (size_t length = 3; length + 2 <= clean.size(); length += 11) {
        const Bytes cut(clean.begin(), clean.begin() + static_cast<ptrdiff_t>(length));
        ASSERT_THAT(errorOf(decodeJpeg(cut, "dump.jpg")), HasSubstr("dump.jpg: damaged JPEG"))
                << length;
    }
}

TEST(Orientation, EveryValuePutsTheStoredPixelsInPlace) {
    // Stored:  A B C    The letters read row by row once upright, for EXIF values 1 to 8.
    //          D E F
    const char* const upright[8] = {"ABCDEF", "CBAFED", "FEDCBA", "DEFABC",
                                    "ADBECF", "DAEBFC", "FCEBDA", "CFBEAD"};
    Picture stored(3, 2);
    for (size_t i = 0; i < 18; ++i) stored.rgb[i] = static_cast<uint8_t>('A' + i / 3);
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const Picture turned = makeUpright(stored, orientation);
        EXPECT_EQ(turned.width, orientation < 5 ? 3u : 2u);
        std::string letters;
        for (size_t i = 0; i < turned.rgb.size(); i += 3)
            letters += static_cast<char>(turned.rgb[i]);
        EXPECT_EQ(letters, upright[orientation - 1]) << orientation;
    }
}

TEST(Orientation, IsReadInBothByteOrdersAndDamageMeansUpright) {
    using namespace std::string_literals;
    // Header, directory at 8 with two entries; the second is the orientation.
    const Bytes little =
            bytesOf("Exif\0\0II*\0\x08\0\0\0\x02\0"
                    "\x00\x01\x03\0\x01\0\0\0\x07\0\0\0"
                    "\x12\x01\x03\0\x01\0\0\0\x08\0\0\0"s);
    const Bytes big =
            bytesOf("Exif\0\0MM\0*\0\0\0\x08\0\x02"
                    "\x01\x00\0\x03\0\0\0\x01\0\x07\0\0"
                    "\x01\x12\0\x03\0\0\0\x01\0\x06\0\0"s);
    EXPECT_EQ(exifOrientation(little.data(), little.size()), 8);
    EXPECT_EQ(exifOrientation(big.data(), big.size()), 6);
    // Cut anywhere before the value: upright, and nothing read beyond the end.
    for (size_t length = 0; length + 3 < little.size(); ++length) {
        const Bytes cut(little.begin(), little.begin() + static_cast<ptrdiff_t>(length));
        EXPECT_EQ(exifOrientation(cut.data(), cut.size()), 1) << length;
    }
    Bytes wild = little;
    wild[10] = wild[11] = wild[12] = wild[13] = 0xFF;  // directory far outside
    EXPECT_EQ(exifOrientation(wild.data(), wild.size()), 1);
    Bytes nonsense = little;
    nonsense[little.size() - 4] = 9;  // no such orientation
    EXPECT_EQ(exifOrientation(nonsense.data(), nonsense.size()), 1);
}

TEST(Ppm, ReadsCommentsAndBothDepths) {
    const auto pixels = [](const std::string& file) {
        return valueOf(decodePicture(bytesOf(file), "x")).rgb;
    };
    EXPECT_THAT(pixels("P6 # a\n2 1 #b\n255\nABCDEF"), ElementsAre('A', 'B', 'C', 'D', 'E', 'F'));
    EXPECT_THAT(pixels(std::string("P6\n1 1\n1000\n\0\0\1\xF4\x03\xE8", 18)),
                ElementsAre(0, 128, 255));  // of 0, 500 and 1000
}

TEST(Ppm, RefusesBadHeadersAndShortFiles) {
    for (const char* text :
         {"P6", "P6\n", "P6\n2 2\n255", "P6\n-2 2\n255\nxxxxxxxxxxxx", "P6\n2 2\n0\nxxxxxxxxxxxx",
          "P6\n2 2\n70000\nxxxxxxxxxxxx", "P6\n2 2\n255\nxxxxxxxxxxx", "P6\n99999999999 1\n255\nx",
          "P6\n40000 40000\n255\nx", "P6 #"}) {
        EXPECT_FALSE(decodePicture(bytesOf(text), "x").ok()) << text;
    }
    EXPECT_THAT(decodePicture(bytesOf("P6\n2 2\n255\nxxx"), "a.ppm").error(),
                HasSubstr("a.ppm: PPM of 2x2 should have 23 bytes, found 14"));
}

}  // namespace
}  // namespace offlineframes
