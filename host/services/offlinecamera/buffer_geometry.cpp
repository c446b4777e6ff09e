// Reads a buffer's geometry and finds the planes of a picture in it.
#include "buffer_geometry.h"

#include <gralloctypes/Gralloc4.h>
#include <imaging/raw10.h>

namespace offlinecamera {

namespace {

namespace gralloc4 = ::android::gralloc4;
using ::aidl::android::hardware::graphics::common::PixelFormat;
using ::aidl::android::hardware::graphics::common::PlaneLayout;
using ::aidl::android::hardware::graphics::common::PlaneLayoutComponentType;
using ::android::hardware::hidl_vec;
using ::android::hardware::graphics::mapper::V4_0::Error;
using Stream = ImportedBuffer::Stream;
using Mapper = ImportedBuffer::IMapper;

/** Gets one entry and decodes it. */
template <typename T>
bool Get(const ::android::sp<Mapper>& mapper, void* handle, const Mapper::MetadataType& type,
         ::android::status_t (*decode)(const hidl_vec<uint8_t>&, T*), T* out) {
    bool decoded = false;
    const auto answer =
            mapper->get(handle, type, [&](Error error, const hidl_vec<uint8_t>& metadata) {
                decoded = error == Error::NONE && decode(metadata, out) == ::android::NO_ERROR;
            });
    return answer.isOk() && decoded;
}

/** The bits of the standard components of a plane. */
int64_t Components(const PlaneLayout& plane) {
    int64_t bits = 0;
    for (const auto& component : plane.components) {
        if (gralloc4::isStandardPlaneLayoutComponentType(component.type)) {
            bits |= component.type.value;
        }
    }
    return bits;
}

int64_t Bits(PlaneLayoutComponentType type) {
    return static_cast<int64_t>(type);
}

const PlaneLayout* FindPlane(const BufferGeometry& geometry, int64_t components) {
    for (const PlaneLayout& plane : geometry.planes) {
        if (Components(plane) == components) return &plane;
    }
    return nullptr;
}

/** Whether `rows` rows of `rowBytes` bytes lie inside the allocation. */
bool FitsInside(const PlaneLayout& plane, uint64_t rowBytes, uint64_t rows, uint64_t size) {
    if (plane.offsetInBytes < 0 || plane.strideInBytes < 0) return false;
    const auto stride = static_cast<uint64_t>(plane.strideInBytes);
    if (stride < rowBytes || rows == 0) return false;
    uint64_t end;
    return !__builtin_mul_overflow(rows - 1, stride, &end) &&
           !__builtin_add_overflow(end, rowBytes, &end) &&
           !__builtin_add_overflow(end, static_cast<uint64_t>(plane.offsetInBytes), &end) &&
           end <= size;
}

std::string PlaceRaw(const BufferGeometry& geometry, const Stream& stream, PlanePlaces* out) {
    const PlaneLayout* plane = FindPlane(geometry, Bits(PlaneLayoutComponentType::RAW));
    const auto width = static_cast<uint32_t>(stream.width);
    if (plane == nullptr ||
        !FitsInside(*plane, imaging::Raw10RowBytes(width), static_cast<uint64_t>(stream.height),
                    geometry.allocationSize)) {
        return "the buffer has no RAW plane that holds the picture";
    }
    *out = {static_cast<uint64_t>(plane->offsetInBytes), 0,
            static_cast<uint64_t>(plane->strideInBytes)};
    return {};
}

/** Cb first in each pair of bytes. */
bool IsCbCr(const PlaneLayout& plane) {
    if (plane.sampleIncrementInBits != 16) return false;
    for (const auto& component : plane.components) {
        const bool cb = component.type.value == Bits(PlaneLayoutComponentType::CB);
        if (component.offsetInBits != (cb ? 0 : 8) || component.sizeInBits != 8) return false;
    }
    return true;
}

std::string PlaceNv12(const BufferGeometry& geometry, const Stream& stream, PlanePlaces* out) {
    const PlaneLayout* luma = FindPlane(geometry, Bits(PlaneLayoutComponentType::Y));
    const PlaneLayout* chroma = FindPlane(
            geometry, Bits(PlaneLayoutComponentType::CB) | Bits(PlaneLayoutComponentType::CR));
    const auto width = static_cast<uint64_t>(stream.width);
    const auto height = static_cast<uint64_t>(stream.height);
    const uint64_t size = geometry.allocationSize;
    if (luma == nullptr || chroma == nullptr || !IsCbCr(*chroma) ||
        luma->strideInBytes != chroma->strideInBytes || !FitsInside(*luma, width, height, size) ||
        !FitsInside(*chroma, width, height / 2, size)) {
        return "the buffer has no luma and CbCr planes that hold the picture";
    }
    *out = {static_cast<uint64_t>(luma->offsetInBytes),
            static_cast<uint64_t>(chroma->offsetInBytes),
            static_cast<uint64_t>(luma->strideInBytes)};
    return {};
}

std::string Size(uint64_t width, uint64_t height) {
    return std::to_string(width) + " x " + std::to_string(height);
}

std::string PlaceBlob(const BufferGeometry& geometry, const Stream& stream, PlanePlaces* out) {
    const auto needed = static_cast<uint64_t>(stream.bufferSize);
    if (geometry.width < needed || geometry.height != 1 || geometry.allocationSize < needed) {
        return "the buffer is " + Size(geometry.width, geometry.height) + " with " +
               std::to_string(geometry.allocationSize) + " bytes: the stream needs " +
               std::to_string(needed) + " x 1";
    }
    *out = {};
    return {};
}

}  // namespace

std::string ReadBufferGeometry(const ::android::sp<Mapper>& mapper, void* handle,
                               BufferGeometry* out) {
    if (!Get(mapper, handle, gralloc4::MetadataType_Width, gralloc4::decodeWidth, &out->width)) {
        return "the mapper does not tell the buffer's width";
    }
    if (!Get(mapper, handle, gralloc4::MetadataType_Height, gralloc4::decodeHeight, &out->height)) {
        return "the mapper does not tell the buffer's height";
    }
    if (!Get(mapper, handle, gralloc4::MetadataType_PixelFormatRequested,
             gralloc4::decodePixelFormatRequested, &out->format)) {
        return "the mapper does not tell the buffer's format";
    }
    if (!Get(mapper, handle, gralloc4::MetadataType_AllocationSize, gralloc4::decodeAllocationSize,
             &out->allocationSize)) {
        return "the mapper does not tell the buffer's allocation size";
    }
    const bool blob = static_cast<PixelFormat>(out->format) == PixelFormat::BLOB;
    if (!blob && !Get(mapper, handle, gralloc4::MetadataType_PlaneLayouts,
                      gralloc4::decodePlaneLayouts, &out->planes)) {
        return "the mapper does not tell the buffer's planes";
    }
    return {};
}

std::string PlacePlanes(const BufferGeometry& geometry, const Stream& stream, PlanePlaces* out) {
    const auto format = static_cast<PixelFormat>(geometry.format);
    if (format != stream.format) {
        return "the buffer has format " + toString(format) + ", its stream " +
               toString(stream.format);
    }
    if (format == PixelFormat::BLOB) return PlaceBlob(geometry, stream, out);
    if (geometry.width != static_cast<uint64_t>(stream.width) ||
        geometry.height != static_cast<uint64_t>(stream.height)) {
        return "the buffer is " + Size(geometry.width, geometry.height) + ", its stream " +
               std::to_string(stream.width) + " x " + std::to_string(stream.height);
    }
    return format == PixelFormat::RAW10 ? PlaceRaw(geometry, stream, out)
                                        : PlaceNv12(geometry, stream, out);
}

}  // namespace offlinecamera
