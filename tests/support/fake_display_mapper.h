// The vendor's display mapper library, answering as told.
#pragma once

#include <functional>

#include "gralloc/zeldisplaymapper.h"

namespace test {

using DisplayMapperAnswer = std::function<int32_t(
        const ::aidl::android::hardware::graphics::allocator::BufferDescriptorInfo& info,
        ::mapper::PlaneLayoutRecord* out)>;

// What the library answers from now on; until then it fails.
void SetDisplayMapperAnswer(DisplayMapperAnswer answer);

// An answer with one plane that holds only luma.
DisplayMapperAnswer LumaScanlines(int32_t scanlines);

}  // namespace test
