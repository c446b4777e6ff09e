// Layouts: planes without gaps, rounding, and what is refused.
#include <graphics_core/buffer_layout.h>
#include <gtest/gtest.h>

#include "buffers.h"

namespace graphics {
namespace {

BufferLayout layoutOf(int32_t format, uint32_t width, uint32_t height) {
    BufferLayout layout;
    const Outcome outcome = layOut(describe(format, width, height), &layout);
    EXPECT_TRUE(outcome.ok()) << outcome.reason;
    return layout;
}

BufferError errorOf(const BufferDescription& description) {
    BufferLayout layout;
    const Outcome outcome = layOut(description, &layout);
    EXPECT_EQ(outcome.ok(), outcome.reason.empty());
    EXPECT_EQ(outcome.ok(), layout.size != 0) << "written in spite of an error";
    return outcome.error;
}

// Planes follow each other without gap or overlap, and fill the buffer.
void expectPlanesFill(const BufferLayout& layout) {
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

TEST(BufferLayout, PlanesFillTheBufferAtEverySize) {
    for (const uint32_t width : {4u, 52u, 640u, 4000u, kMaxSide}) {
        for (const uint32_t height : {1u, 127u, 128u, 129u, kMaxSide}) {
            expectPlanesFill(layoutOf(kFormatRaw10, width, height));
            expectPlanesFill(layoutOf(kFormatYcbcr420, width, height));
        }
    }
    EXPECT_EQ(layoutOf(kFormatRaw10, 48, 1).stride, 64u);   // 60 bytes
    EXPECT_EQ(layoutOf(kFormatRaw10, 52, 1).stride, 128u);  // 65 bytes
    // An odd picture keeps the chroma of its last column and row.
    const Plane chroma = layoutOf(kFormatYcbcr420, 641, 481).planes.at(1);
    EXPECT_EQ(chroma.width, 321u);
    EXPECT_EQ(chroma.height, 241u);
}

TEST(BufferLayout, RefusesContradictionsAndWhatIsNotSupported) {
    const auto errorWith = [](auto change) {
        BufferDescription description = describe(kFormatRaw10, 640, 480);
        change(description);
        return errorOf(description);
    };
    const BufferError bad = BufferError::kBadValue;
    EXPECT_EQ(errorWith([](auto& d) { d.width = 0; }), bad);
    EXPECT_EQ(errorWith([](auto& d) { d.layerCount = 0; }), bad);
    EXPECT_EQ(errorWith([](auto& d) { d.name = std::string(128, 'n'); }), bad);
    EXPECT_EQ(errorWith([](auto& d) { d.name = std::string("a\0b", 3); }), bad);
    EXPECT_EQ(errorWith([](auto& d) { d.name = std::string(127, 'n'); }), BufferError::kNone);

    const BufferError unsupported = BufferError::kUnsupported;
    EXPECT_EQ(errorWith([](auto& d) { d.format = 0x26; }), unsupported);    // RAW12
    EXPECT_EQ(errorWith([](auto& d) { d.usage = 1 << 14; }), unsupported);  // protected
    EXPECT_EQ(errorWith([](auto& d) { d.layerCount = 2; }), unsupported);
    EXPECT_EQ(errorWith([](auto& d) { d.reservedSize = 1; }), unsupported);
    EXPECT_EQ(errorWith([](auto& d) { d.width = 639; }), unsupported);
    for (const uint32_t side : {kMaxSide + 4, 0x80000000u, 0xfffffffcu}) {
        EXPECT_EQ(errorOf(describe(kFormatRaw10, side, 2)), unsupported) << side;
        EXPECT_EQ(errorOf(describe(kFormatYcbcr420, side, side)), unsupported) << side;
    }
    EXPECT_EQ(errorOf(describe(kFormatBlob, kMaxBlobBytes, 1)), BufferError::kNone);
    EXPECT_EQ(errorOf(describe(kFormatBlob, kMaxBlobBytes + 1, 1)), unsupported);
    EXPECT_EQ(errorOf(describe(kFormatBlob, 100, 2)), unsupported);
}

}  // namespace
}  // namespace graphics
