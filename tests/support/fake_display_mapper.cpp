// Stands in front of the display mapper library's one function.

#include "tests/support/fake_display_mapper.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

test::DisplayMapperAnswer gAnswer;

}  // namespace

namespace test {

void SetDisplayMapperAnswer(DisplayMapperAnswer answer) {
    gAnswer = std::move(answer);
}

DisplayMapperAnswer LumaScanlines(int32_t scanlines) {
    return [scanlines](const auto&, ::mapper::PlaneLayoutRecord* out) {
        out->numPlanes = 1;
        out->planes[0].components[0].type = 1;
        out->planes[0].numComponents = 1;
        out->planes[0].sampleIncrementBits = 8;
        out->planes[0].scanlines = scanlines;
        return 0;
    };
}

}  // namespace test

namespace mapper {

int32_t GetFromBufferDescriptor(
        ::aidl::android::hardware::graphics::allocator::BufferDescriptorInfo info,
        vendor_zel_hardware_display_common_MetadataType type, void* out, bool flag) {
    EXPECT_EQ(static_cast<int>(type), 15);
    EXPECT_FALSE(flag);
    return gAnswer ? gAnswer(info, static_cast<PlaneLayoutRecord*>(out)) : -1;
}

}  // namespace mapper
