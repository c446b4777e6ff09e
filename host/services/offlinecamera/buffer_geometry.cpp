// Reads a buffer's geometry and finds the planes of a picture in it.
#include "buffer_geometry.h"

#include <gralloctypes/Gralloc4.h>
#include <imaging/raw10.h>

#include <string>
#include <vector>

namespace offlinecamera {

namespace {

namespace gralloc4 = ::android::gralloc4;
using ::aidl::android::hardware::camera::device::Stream;
using ::aidl::android::hardware::graphics::common::PixelFormat;
using ::aidl::android::hardware::graphics::common::PlaneLayout;
using ::aidl::android::hardware::graphics::common::PlaneLayoutComponentType;
using ::android::hardware::hidl_vec;
using ::android::hardware::graphics::mapper::V4_0::Error;
using ::android::hardware::graphics::mapper::V4_0::IMapper;
using base::Failure;
using base::Result;

struct BufferGeometry {
    uint64_t width = 0;
    uint64_t height = 0;
    ::android::hardware::graphics::common::V1_2::PixelFormat format = {};
    uint64_t allocationSize = 0;      // bytes
    std::vector<PlaneLayout> planes;  // none of a BLOB
};

Result<BufferGeometry> ReadGeometry(void* handle) {
    BufferGeometry geometry;
    std::string missing;  // the first value that the mapper did not give
    const auto read = [&](const char* name, const IMapper::MetadataType& type, auto decode,
                          auto* out) {
        bool decoded = false;
        const auto take = [&](Error error, const hidl_vec<uint8_t>& metadata) {
            decoded = error == Error::NONE && decode(metadata, out) == ::android::NO_ERROR;
        };
        const auto answer = DeviceMapper()->get(handle, type, take);
        if (missing.empty() && !(answer.isOk() && decoded)) missing = name;
    };
    read("width", gralloc4::MetadataType_Width, gralloc4::decodeWidth, &geometry.width);
    read("height", gralloc4::MetadataType_Height, gralloc4::decodeHeight, &geometry.height);
    read("format", gralloc4::MetadataType_PixelFormatRequested,
         gralloc4::decodePixelFormatRequested, &geometry.format);
    read("allocation size", gralloc4::MetadataType_AllocationSize, gralloc4::decodeAllocationSize,
         &geometry.allocationSize);
    if (static_cast<PixelFormat>(geometry.format) != PixelFormat::BLOB) {
        read("planes", gralloc4::MetadataType_PlaneLayouts, gralloc4::decodePlaneLayouts,
             &geometry.planes);
    }
    if (!missing.empty()) return Failure{"the mapper does not tell the buffer's " + missing};
    return geometry;
}

int64_t Bits(PlaneLayoutComponentType type) {
    return static_cast<int64_t>(type);
}

// Whether `rows` rows of `rowBytes` bytes are inside the allocation.
bool FitsInside(const PlaneLayout& plane, uint64_t rowBytes, uint64_t rows, uint64_t size) {
    if (plane.offsetInBytes < 0 || plane.strideInBytes < 0) return false;
    const auto stride = static_cast<uint64_t>(plane.strideInBytes);
    const auto first = static_cast<uint64_t>(plane.offsetInBytes);
    // No overflow: neither is larger than the allocation, and rows are 32768 at most.
    return rowBytes <= stride && stride <= size && first <= size &&
           first + (rows - 1) * stride + rowBytes <= size;
}

// The plane that has exactly these standard components, or null; also null if it does not hold
// `rows` rows of `rowBytes` bytes.
const PlaneLayout* FindPlane(const BufferGeometry& geometry, int64_t components, uint64_t rowBytes,
                             uint64_t rows) {
    for (const PlaneLayout& plane : geometry.planes) {
        int64_t bits = 0;
        for (const auto& component : plane.components) {
            if (gralloc4::isStandardPlaneLayoutComponentType(component.type)) {
                bits |= component.type.value;
            }
        }
        if (bits != components) continue;
        return FitsInside(plane, rowBytes, rows, geometry.allocationSize) ? &plane : nullptr;
    }
    return nullptr;
}

PicturePlaces Places(const BufferGeometry& geometry, const PlaneLayout& first, int64_t second) {
    return {static_cast<uint32_t>(geometry.width), static_cast<uint32_t>(geometry.height),
            static_cast<uint64_t>(first.offsetInBytes), static_cast<uint64_t>(second),
            static_cast<uint64_t>(first.strideInBytes)};
}

Result<PicturePlaces> PlaceRaw(const BufferGeometry& geometry) {
    const size_t rowBytes = imaging::Raw10RowBytes(static_cast<uint32_t>(geometry.width));
    const PlaneLayout* const raw =
            FindPlane(geometry, Bits(PlaneLayoutComponentType::RAW), rowBytes, geometry.height);
    if (raw == nullptr) return Failure{"the buffer has no RAW plane that holds the picture"};
    return Places(geometry, *raw, 0);
}

// Cb first in each pair of bytes.
bool IsCbCr(const PlaneLayout& plane) {
    if (plane.sampleIncrementInBits != 16) return false;
    for (const auto& component : plane.components) {
        const bool cb = component.type.value == Bits(PlaneLayoutComponentType::CB);
        if (component.offsetInBits != (cb ? 0 : 8) || component.sizeInBits != 8) return false;
    }
    return true;
}

Result<PicturePlaces> PlaceNv12(const BufferGeometry& geometry) {
    const int64_t cbCr = Bits(PlaneLayoutComponentType::CB) | Bits(PlaneLayoutComponentType::CR);
    const PlaneLayout* const luma =
            FindPlane(geometry, Bits(PlaneLayoutComponentType::Y), geometry.width, geometry.height);
    const PlaneLayout* const chroma =
            FindPlane(geometry, cbCr, geometry.width, geometry.height / 2);
    if (luma == nullptr || chroma == nullptr || !IsCbCr(*chroma) ||
        luma->strideInBytes != chroma->strideInBytes) {
        return Failure{"the buffer has no luma and CbCr planes that hold the picture"};
    }
    return Places(geometry, *luma, chroma->offsetInBytes);
}

}  // namespace

const ::android::sp<IMapper>& DeviceMapper() {
    // Never destroyed: threads may still work while the process exits.
    static const auto* const mapper = new ::android::sp<IMapper>(IMapper::getService());
    return *mapper;
}

Result<PicturePlaces> FindPicture(void* handle, const Stream& stream) {
    const Result<BufferGeometry> read = ReadGeometry(handle);
    if (!read.Ok()) return read.GetFailure();
    const BufferGeometry& geometry = read.Value();
    const auto format = static_cast<PixelFormat>(geometry.format);
    if (format != stream.format) {
        return Failure{"the buffer has format " + toString(format) + ", its stream " +
                       toString(stream.format)};
    }
    const std::string size =
            std::to_string(geometry.width) + " x " + std::to_string(geometry.height);
    if (format == PixelFormat::BLOB) {
        const auto needed = static_cast<uint64_t>(stream.bufferSize);
        if (geometry.width >= needed && geometry.height == 1 && geometry.allocationSize >= needed) {
            return PicturePlaces{};
        }
        return Failure{"the buffer is " + size + " with " +
                       std::to_string(geometry.allocationSize) + " bytes: the stream needs " +
                       std::to_string(needed) + " x 1"};
    }
    if (geometry.width != static_cast<uint64_t>(stream.width) ||
        geometry.height != static_cast<uint64_t>(stream.height)) {
        return Failure{"the buffer is " + size + ", its stream " + std::to_string(stream.width) +
                       " x " + std::to_string(stream.height)};
    }
    return format == PixelFormat::RAW10 ? PlaceRaw(geometry) : PlaceNv12(geometry);
}

}  // namespace offlinecamera
