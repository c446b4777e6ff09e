// The plane-layout query: how many rows a buffer's luma or raw plane has.

#include <aidl/android/hardware/graphics/allocator/BufferDescriptorInfo.h>
#include <aidl/android/hardware/graphics/common/PlaneLayoutComponentType.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "clientlog.h"
#include "offlinecamerazelinterface.h"
#include "zeldisplaymapper.h"

namespace vendor::zel::hardware::camera::offlinecamera::implementation {

using ::aidl::android::hardware::graphics::allocator::BufferDescriptorInfo;
using ::aidl::android::hardware::graphics::common::BufferUsage;
using ::aidl::android::hardware::graphics::common::PixelFormat;
using ::aidl::android::hardware::graphics::common::PlaneLayoutComponentType;

namespace {

constexpr int32_t kMaxPlanes = 4;  // examined, of the record's eight
constexpr auto kLumaMask = static_cast<uint32_t>(PlaneLayoutComponentType::Y);
constexpr auto kRawMask = static_cast<uint32_t>(PlaneLayoutComponentType::RAW);

// YCBCR_420_888, RAW_OPAQUE, RAW10 and RAW12, which have consecutive values.
bool HasPlaneLayout(PixelFormat format) {
    constexpr uint32_t kFormats = 4;
    return static_cast<uint32_t>(format) - static_cast<uint32_t>(PixelFormat::YCBCR_420_888) <
           kFormats;
}

BufferDescriptorInfo Describe(PixelFormat format, BufferUsage usage, uint32_t width,
                              uint32_t height) {
    BufferDescriptorInfo info;
    info.name.fill(0);
    info.width = static_cast<int32_t>(width);
    info.height = static_cast<int32_t>(height);
    info.layerCount = 1;
    info.format = format;
    info.usage = usage;
    info.reservedSize = 0;
    return info;
}

uint32_t ComponentMask(const ::mapper::PlaneEntry& plane) {
    if (plane.numComponents > ::mapper::kMaxPlaneComponents) {
        abort();  // the display mapper does not fill the record that zeldisplaymapper.h declares
    }
    uint32_t mask = 0;
    for (int32_t i = 0; i < plane.numComponents; ++i) {
        mask |= plane.components[i].type;
    }
    return mask;
}

// Truncated; saturated beyond the type's range, as the devices' processors do where the language
// leaves the conversion undefined.
uint32_t ToUnsigned(float value) {
    if (!(value > 0.0f)) {  // also for NaN
        return 0;
    }
    return value < 4294967296.0f ? static_cast<uint32_t>(value) : UINT32_MAX;
}

void LogPlane(const ::mapper::PlaneEntry& plane, uint32_t mask) {
    CLIENT_LOGI("%s: plane info: component - %d", "GetPlaneLayout", mask);
    CLIENT_LOGI("h_subsampling - %u, v_subsampling - %u, offset - %u, pixel_increment/step - %d",
                plane.horizontalSubsampling, plane.verticalSubsampling, plane.offset,
                plane.sampleIncrementBits / 8);
    const float bytesPerSample = static_cast<float>(plane.sampleIncrementBits) * 0.125f;
    const uint32_t stridePixels =
            ToUnsigned(static_cast<float>(plane.strideBytes) / bytesPerSample);
    CLIENT_LOGI("stride_pixel - %d, stride_bytes - %d, scanlines - %d, size - %u", stridePixels,
                plane.strideBytes, plane.scanlines, plane.size);
}

}  // namespace

void OfflineCameraZelInterface::GetPlaneLayout(PixelFormat format, BufferUsage usage,
                                               uint32_t width, uint32_t height,
                                               int32_t* scanlines) const {
    // Kept: start-up never sets this interface, so the query ends here. Buffers then have 0 scan
    // lines, and source files are opened without reading a row. Only something outside the program
    // can set it.
    if (m_planeLayoutInterface == nullptr) {
        return;
    }
    if (!HasPlaneLayout(format)) {
        CLIENT_LOGI("format %d dont fetch plane layout info", static_cast<int32_t>(format));
        return;
    }
    if (m_aiMapper == nullptr) {
        return;
    }
    ::mapper::PlaneLayoutRecord record{};
    if (::mapper::GetFromBufferDescriptor(Describe(format, usage, width, height),
                                          VENDOR_ZEL_METADATA_PLANE_LAYOUTS, &record, false) != 0) {
        return;
    }
    const int32_t planes = std::min(record.numPlanes, kMaxPlanes);
    CLIENT_LOGI("%s: Number of planes - %d gralloc format %d", "GetPlaneLayout", planes,
                static_cast<int32_t>(format));
    for (int32_t i = 0; i < planes; ++i) {
        const ::mapper::PlaneEntry& plane = record.planes[i];
        const uint32_t mask = ComponentMask(plane);
        if (mask == kLumaMask || mask == kRawMask) {
            *scanlines = plane.scanlines;
        }
        LogPlane(plane, mask);
    }
}

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation
