// Stands in front of the display mapper library's one function.

#include "tests/support/fake_display_mapper.h"

#include <gtest/gtest.h>

#include <algorithm>

test::DisplayMapper& test::TheDisplayMapper() {
    static DisplayMapper mapper;
    return mapper;
}

int32_t mapper::GetFromBufferDescriptor(
        ::aidl::android::hardware::graphics::allocator::BufferDescriptorInfo info,
        vendor_zel_hardware_display_common_MetadataType type, void* out, bool flag) {
    EXPECT_EQ(static_cast<int>(type), 15);
    EXPECT_FALSE(flag);
    test::DisplayMapper& told = test::TheDisplayMapper();
    told.asked.push_back(info);
    auto* const record = static_cast<PlaneLayoutRecord*>(out);
    record->numPlanes = static_cast<int32_t>(told.planes.size());
    std::copy(told.planes.begin(), told.planes.end(), record->planes);
    return told.error;
}
