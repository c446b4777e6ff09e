// Byte counts of frames and refusal of impossible ones.

#include "host/tools/offlineframes/frame_geometry.h"

#include <gmock/gmock.h>

#include "test_support.h"

namespace offlineframes {
namespace {

using testing::HasSubstr;

TEST(FrameGeometry, PadsAndCountsAsTheAllocatorDoes) {
    const struct {
        FrameFormat format;
        PictureSize size;
        uint32_t stride, scanlines;
        size_t bytes;
    } cases[] = {
            {FrameFormat::kRaw10, {4096, 3072}, 5120, 3072, 15728640},
            {FrameFormat::kRaw10, {100, 10}, 128, 10, 1280},
            {FrameFormat::kNv12, {4000, 3000}, 4096, 3072, 18874368},
            {FrameFormat::kNv12, {640, 480}, 640, 512, 491520},
    };
    for (const auto& c : cases) {
        const FrameGeometry geometry = allocatorGeometry(c.format, c.size);
        EXPECT_EQ(geometry.stride, c.stride);
        EXPECT_EQ(geometry.scanlines, c.scanlines);
        EXPECT_EQ(valueOf(frameBytes(geometry)), c.bytes);
    }
}

TEST(FrameGeometry, RefusesWhatCannotBeAFrameAndSaysWhy) {
    const struct {
        FrameGeometry geometry;
        const char* reason;
    } cases[] = {
            {{FrameFormat::kRaw10, {0, 480}, 800, 480}, "1 to 32768"},
            {{FrameFormat::kRaw10, {642, 480}, 1000, 480}, "multiple of 4"},
            {{FrameFormat::kNv12, {640, 481}, 640, 482}, "height of 2"},
            {{FrameFormat::kRaw10, {640, 480}, 799, 480}, "stride of at least 800"},
            {{FrameFormat::kNv12, {640, 480}, 640, 478}, "at least 480 scan lines"},
            // Products beyond 32 and near 64 bits.
            {{FrameFormat::kNv12, {640, 480}, 65536, 65536}, "larger than"},
            {{FrameFormat::kNv12, {640, 480}, 4294967294, 4294967294}, "larger than"},
    };
    for (const auto& c : cases) {
        EXPECT_THAT(errorOf(frameBytes(c.geometry)),
                    testing::AllOf(HasSubstr(c.reason), HasSubstr(describe(c.geometry))));
    }
}

}  // namespace
}  // namespace offlineframes
