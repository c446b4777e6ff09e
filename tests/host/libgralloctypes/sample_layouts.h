// Plane layouts that the tests encode, and bytes written by hand from the format's description.
#pragma once

#include <gralloctypes/Gralloc4.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

using ::aidl::android::hardware::graphics::common::PlaneLayout;
using Bytes = ::android::hardware::hidl_vec<uint8_t>;

// Puts bytes together piece by piece, independently of the code under test.
class HandWritten {
  public:
    template <typename T>
    HandWritten& number(T value) {
        const auto* first = reinterpret_cast<const uint8_t*>(&value);
        mBytes.insert(mBytes.end(), first, first + sizeof(value));
        return *this;
    }
    HandWritten& text(const std::string& value) {
        number<int64_t>(static_cast<int64_t>(value.size()));
        mBytes.insert(mBytes.end(), value.begin(), value.end());
        return *this;
    }
    HandWritten& standardHeader(int64_t type) {
        return text("android.hardware.graphics.common.StandardMetadataType").number(type);
    }
    operator Bytes() const { return mBytes; }

  private:
    std::vector<uint8_t> mBytes;
};

// A 640 x 480 picture in two planes: 8-bit luma, then interleaved chroma of half the size.
inline std::vector<PlaneLayout> sampleLayouts() {
    using namespace ::android::gralloc4;
    std::vector<PlaneLayout> planes(2);
    planes[0].components = {{PlaneLayoutComponentType_Y, 0, 8}};
    planes[0].sampleIncrementInBits = 8;
    planes[0].strideInBytes = 640;
    planes[0].widthInSamples = 640;
    planes[0].heightInSamples = 480;
    planes[0].totalSizeInBytes = 640 * 512;
    planes[0].horizontalSubsampling = 1;
    planes[0].verticalSubsampling = 1;
    planes[1].components = {{PlaneLayoutComponentType_CB, 0, 8},
                            {PlaneLayoutComponentType_CR, 8, 8}};
    planes[1].offsetInBytes = 640 * 512;
    planes[1].sampleIncrementInBits = 16;
    planes[1].strideInBytes = 640;
    planes[1].widthInSamples = 320;
    planes[1].heightInSamples = 240;
    planes[1].totalSizeInBytes = 640 * 256;
    planes[1].horizontalSubsampling = 2;
    planes[1].verticalSubsampling = 2;
    return planes;
}
