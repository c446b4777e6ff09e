// What the mapper says about an imported buffer, and whether it fits a stream.
#pragma once

#include <aidl/android/hardware/graphics/common/PlaneLayout.h>
#include <android/hardware/graphics/common/1.2/types.h>

#include <cstdint>
#include <string>
#include <vector>

#include "imported_buffer.h"

namespace offlinecamera {

struct BufferGeometry {
    uint64_t width = 0;
    uint64_t height = 0;
    ::android::hardware::graphics::common::V1_2::PixelFormat format = {};
    uint64_t allocationSize = 0;                                                   // bytes
    std::vector<::aidl::android::hardware::graphics::common::PlaneLayout> planes;  // none of a BLOB
};

/** @param handle an imported handle. @return empty, or which entry could not be had */
std::string ReadBufferGeometry(const ::android::sp<ImportedBuffer::IMapper>& mapper, void* handle,
                               BufferGeometry* out);

/** Checks the buffer against the stream and finds its planes; every byte of the picture lies inside
 * the allocation. @return empty, or what does not fit */
std::string PlacePlanes(const BufferGeometry& geometry, const ImportedBuffer::Stream& stream,
                        PlanePlaces* out);

}  // namespace offlinecamera
