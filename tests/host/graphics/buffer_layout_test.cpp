// Layouts: planes without gaps, rounding, and what is refused.
#include <graphics/buffer_layout.h>
#include <gtest/gtest.h>

#include "buffers.h"

namespace graphics {
namespace {

BufferLayout LayoutOf(int32_t format, uint32_t width, uint32_t height) {
    return LayOut(Describe(format, width, height)).Value();
}

TEST(BufferLayout, PlanesFillTheBufferAtEverySize) {
    for (const int32_t format : {kFormatRaw10, kFormatYcbcr420}) {
        for (const uint32_t width : {4u, 52u, 4000u, kMaxSide}) {
            for (const uint32_t height : {1u, 128u, 129u, kMaxSide}) {
                const BufferLayout layout = LayoutOf(format, width, height);
                uint64_t end = 0;
                for (const Plane& plane : layout.planes) {
                    EXPECT_EQ(plane.offset, end);
                    EXPECT_EQ(plane.size, uint64_t{plane.stride} * plane.scanlines);
                    EXPECT_GE(plane.stride, (plane.width * plane.sampleIncrementInBits + 7) / 8);
                    EXPECT_GE(plane.scanlines, plane.height);
                    end += plane.size;
                }
                EXPECT_EQ(layout.size, end);
            }
        }
    }
    EXPECT_EQ(LayoutOf(kFormatRaw10, 48, 1).stride, 64u);   // 60 bytes
    EXPECT_EQ(LayoutOf(kFormatRaw10, 52, 1).stride, 128u);  // 65 bytes
    // An odd picture keeps the chroma of its last column and row.
    const Plane chroma = LayoutOf(kFormatYcbcr420, 641, 481).planes.at(1);
    EXPECT_EQ(chroma.width, 321u);
    EXPECT_EQ(chroma.height, 241u);
}

TEST(BufferLayout, RefusesContradictionsAndWhatIsNotSupported) {
    const auto errorWith = [](auto change) {
        BufferDescription description = Describe(kFormatRaw10, 640, 480);
        change(description);
        return ErrorOf(LayOut(description));
    };
    EXPECT_EQ(errorWith([](auto& d) { d.width = 0; }), BufferError::kBadValue);
    EXPECT_EQ(errorWith([](auto& d) { d.name = std::string(128, 'n'); }), BufferError::kBadValue);
    const BufferError unsupported = BufferError::kUnsupported;
    EXPECT_EQ(errorWith([](auto& d) { d.format = 0x26; }), unsupported);    // RAW12
    EXPECT_EQ(errorWith([](auto& d) { d.usage = 1 << 14; }), unsupported);  // protected
    EXPECT_EQ(errorWith([](auto& d) { d.layerCount = 2; }), unsupported);
    EXPECT_EQ(errorWith([](auto& d) { d.reservedSize = 1; }), unsupported);
    EXPECT_EQ(errorWith([](auto& d) { d.width = 639; }), unsupported);
    EXPECT_EQ(errorWith([](auto& d) { d.height = kMaxSide + 1; }), unsupported);
    EXPECT_TRUE(LayOut(Describe(kFormatBlob, kMaxBlobBytes, 1)).Ok());
    EXPECT_FALSE(LayOut(Describe(kFormatBlob, kMaxBlobBytes + 1, 1)).Ok());
    EXPECT_FALSE(LayOut(Describe(kFormatBlob, 100, 2)).Ok());
}

}  // namespace
}  // namespace graphics
