// Layouts: the numbers that source frames are made for, rounding, and what is refused.
#include <graphics_core/BufferLayout.h>
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
    layout.size = 4711;
    const Outcome outcome = layOut(description, &layout);
    EXPECT_EQ(outcome.ok(), outcome.reason.empty());
    if (!outcome.ok()) EXPECT_EQ(layout.size, 4711u) << "written in spite of an error";
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

TEST(BufferLayout, SizesOfTheTestModes) {
    const BufferLayout raw = layoutOf(kFormatRaw10, 4096, 3072);
    EXPECT_EQ(raw.stride, 5120u);
    EXPECT_EQ(raw.size, 15'728'640u);
    EXPECT_EQ(raw.planes.at(0).scanlines, 3072u);

    const BufferLayout full = layoutOf(kFormatYcbcr420, 4000, 3000);
    EXPECT_EQ(full.stride, 4096u);
    EXPECT_EQ(full.size, 18'874'368u);
    EXPECT_EQ(full.planes.at(0).scanlines, 3072u);
    EXPECT_EQ(full.planes.at(1).offset, 4096u * 3072u);
    EXPECT_EQ(full.planes.at(1).scanlines, 1536u);

    EXPECT_EQ(layoutOf(kFormatYcbcr420, 640, 480).size, 491'520u);

    const BufferLayout jpeg = layoutOf(kFormatBlob, 24'000'000, 1);
    EXPECT_EQ(jpeg.stride, 24'000'000u);
    EXPECT_EQ(jpeg.size, 24'000'000u);
    EXPECT_TRUE(jpeg.planes.empty());
}

TEST(BufferLayout, RoundsRowsUpAtTheirAlignment) {
    EXPECT_EQ(layoutOf(kFormatRaw10, 48, 1).stride, 64u);   // 60 bytes
    EXPECT_EQ(layoutOf(kFormatRaw10, 52, 1).stride, 128u);  // 65 bytes
    EXPECT_EQ(layoutOf(kFormatYcbcr420, 128, 128).size, 128u * 128u * 3 / 2);
    EXPECT_EQ(layoutOf(kFormatYcbcr420, 129, 129).size, 256u * 256u * 3 / 2);
}

TEST(BufferLayout, PlanesFillTheBufferAtEverySize) {
    for (const uint32_t width : {4u, 52u, 640u, 4000u, 4096u, kMaxSide}) {
        for (const uint32_t height : {1u, 2u, 127u, 128u, 129u, 3000u, kMaxSide}) {
            expectPlanesFill(layoutOf(kFormatRaw10, width, height));
            expectPlanesFill(layoutOf(kFormatYcbcr420, width, height));
        }
    }
    // An odd picture keeps the chroma of its last column and row.
    const Plane chroma = layoutOf(kFormatYcbcr420, 641, 481).planes.at(1);
    EXPECT_EQ(chroma.width, 321u);
    EXPECT_EQ(chroma.height, 241u);
}

TEST(BufferLayout, NamesTheComponents) {
    const Plane raw = layoutOf(kFormatRaw10, 4096, 3072).planes.at(0);
    ASSERT_EQ(raw.components.size(), 1u);
    EXPECT_EQ(raw.components[0].type, 0x100000u);
    EXPECT_EQ(raw.sampleIncrementInBits, 10u);

    const std::vector<Plane> planes = layoutOf(kFormatYcbcr420, 640, 480).planes;
    ASSERT_EQ(planes.size(), 2u);
    EXPECT_EQ(planes[0].components.at(0).type, 1u);
    ASSERT_EQ(planes[1].components.size(), 2u);
    EXPECT_EQ(planes[1].components[0].type, 2u);  // Cb lies first
    EXPECT_EQ(planes[1].components[0].offsetInBits, 0u);
    EXPECT_EQ(planes[1].components[1].type, 4u);
    EXPECT_EQ(planes[1].components[1].offsetInBits, 8u);
    EXPECT_EQ(planes[1].subsampling, 2u);
}

TEST(BufferLayout, RefusesZeroesAndBadNames) {
    const BufferDescription good = describe(kFormatYcbcr420, 640, 480);
    for (uint32_t BufferDescription::*field :
         {&BufferDescription::width, &BufferDescription::height, &BufferDescription::layerCount}) {
        BufferDescription zero = good;
        zero.*field = 0;
        EXPECT_EQ(errorOf(zero), BufferError::kBadValue);
    }
    BufferDescription named = good;
    named.name = std::string(kMaxNameBytes, 'n');
    EXPECT_EQ(errorOf(named), BufferError::kNone);
    named.name += 'n';
    EXPECT_EQ(errorOf(named), BufferError::kBadValue);
    named.name = std::string("a\0b", 3);
    EXPECT_EQ(errorOf(named), BufferError::kBadValue);
}

TEST(BufferLayout, RefusesWhatIsNotSupported) {
    // RGBA_8888, RAW16, IMPLEMENTATION_DEFINED, RAW_OPAQUE, RAW12 and no format at all.
    for (const int32_t format : {1, 0x20, 0x22, 0x24, 0x26, 0, -1}) {
        EXPECT_EQ(errorOf(describe(format, 640, 480)), BufferError::kUnsupported) << format;
    }
    for (const uint64_t usage : {uint64_t{1} << 14, uint64_t{1} << 28, uint64_t{1} << 63}) {
        BufferDescription description = describe(kFormatRaw10, 640, 480);
        description.usage = usage;
        EXPECT_EQ(errorOf(description), BufferError::kUnsupported) << usage;
    }
    BufferDescription layers = describe(kFormatRaw10, 640, 480);
    layers.layerCount = 2;
    EXPECT_EQ(errorOf(layers), BufferError::kUnsupported);
    BufferDescription reserved = describe(kFormatRaw10, 640, 480);
    reserved.reservedSize = 1;
    EXPECT_EQ(errorOf(reserved), BufferError::kUnsupported);
}

TEST(BufferLayout, RefusesSizesBeyondTheLimits) {
    for (const int32_t format : {kFormatRaw10, kFormatYcbcr420}) {
        for (const uint32_t side : {kMaxSide + 4, 0x80000000u, 0xfffffffcu}) {
            EXPECT_EQ(errorOf(describe(format, side, 2)), BufferError::kUnsupported) << side;
            EXPECT_EQ(errorOf(describe(format, 4, side)), BufferError::kUnsupported) << side;
            EXPECT_EQ(errorOf(describe(format, side, side)), BufferError::kUnsupported) << side;
        }
    }
    EXPECT_EQ(errorOf(describe(kFormatRaw10, 4095, 3072)), BufferError::kUnsupported);
    EXPECT_EQ(errorOf(describe(kFormatBlob, kMaxBlobBytes, 1)), BufferError::kNone);
    EXPECT_EQ(errorOf(describe(kFormatBlob, kMaxBlobBytes + 1, 1)), BufferError::kUnsupported);
    EXPECT_EQ(errorOf(describe(kFormatBlob, 100, 2)), BufferError::kUnsupported);
}

}  // namespace
}  // namespace graphics
