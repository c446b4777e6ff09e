// The vendor's display mapper library, answering as told.
#pragma once

#include <vector>

#include "gralloc/zeldisplaymapper.h"

namespace test {

struct DisplayMapper {
    // What is told.
    std::vector<::mapper::PlaneEntry> planes;
    int32_t error = 0;

    // The questions.
    std::vector<::aidl::android::hardware::graphics::allocator::BufferDescriptorInfo> asked;
};

// The library of this process.
DisplayMapper& TheDisplayMapper();

}  // namespace test
