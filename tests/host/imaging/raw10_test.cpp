// The bit order of packed RAW10.
#include <gmock/gmock.h>
#include <imaging/raw10.h>

namespace imaging {

TEST(Raw10, HighBitsComeFirstThenTheRestsFromTheLowestBitsUp) {
    const uint16_t pixels[4] = {0x001, 0x3fe, 0x2ab, 0x154};
    uint8_t packed[5];
    PackRaw10Row(pixels, 4, packed);
    // Rests 1, 2, 3, 0 from the low end: 00 11 10 01.
    EXPECT_THAT(packed, testing::ElementsAre(0x00, 0xff, 0xaa, 0x55, 0x39));
}

TEST(Raw10, EveryCodeSurvivesInEveryPlaceOfAGroup) {
    std::vector<uint16_t> pixels;
    for (int shift = 0; shift < 4; ++shift) {
        for (int i = 0; i < 1024; ++i) pixels.push_back(static_cast<uint16_t>((i + shift) % 1024));
    }
    const auto width = static_cast<uint32_t>(pixels.size());
    std::vector<uint8_t> packed(Raw10RowBytes(width));
    std::vector<uint16_t> back(width);
    PackRaw10Row(pixels.data(), width, packed.data());
    UnpackRaw10Row(packed.data(), width, back.data());
    EXPECT_EQ(back, pixels);
    EXPECT_EQ(Raw10RowBytes(4096), 5120u);
}

}  // namespace imaging
