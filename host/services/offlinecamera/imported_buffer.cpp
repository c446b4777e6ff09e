// Imports, checks and locks the buffers of a client.
#include "imported_buffer.h"

#include <aidl/android/hardware/graphics/common/BufferUsage.h>
#include <aidlcommonsupport/NativeHandle.h>
#include <gralloctypes/Gralloc4.h>
#include <imaging/raw10.h>

#include <string>
#include <vector>

#include "refusal.h"

namespace offlinecamera {

namespace {

namespace gralloc4 = ::android::gralloc4;
using ::aidl::android::hardware::graphics::common::BufferUsage;
using ::aidl::android::hardware::graphics::common::PixelFormat;
using ::aidl::android::hardware::graphics::common::PlaneLayout;
using ::aidl::android::hardware::graphics::common::PlaneLayoutComponentType;
using ::android::hardware::hidl_handle;
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

// Finds the picture of an imported handle. Format and size are those of the stream; a BLOB buffer
// has at least the stream's buffer size. Fails with what does not fit.
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

// What an operation of the mapper gives; null counts as an error. `operation` makes the call with
// the callback that it is given.
template <class Operation>
Result<void*> Ask(const std::string& what, const Operation& operation) {
    Error error = Error::NO_RESOURCES;
    void* given = nullptr;
    const auto answer = operation([&](Error result, void* value) {
        error = result;
        given = value;
    });
    if (answer.isOk() && error == Error::NONE && given != nullptr) return given;
    return Failure{"the mapper does not " + what + ": error " +
                   std::to_string(static_cast<int>(error))};
}

}  // namespace

const ::android::sp<IMapper>& DeviceMapper() {
    // Never destroyed: threads may still work while the process exits.
    static const auto* const mapper = new ::android::sp<IMapper>(IMapper::getService());
    return *mapper;
}

Result<ImportedBuffer> ImportedBuffer::Import(const NativeHandle& handle,
                                              const NativeHandle& acquireFence,
                                              const Stream& stream) {
    if (DeviceMapper() == nullptr) return Failure{"there is no graphics mapper"};
    if (::android::isAidlNativeHandleEmpty(handle)) {
        return Failure{"the buffer handle is empty: was the buffer allocated?"};
    }
    if (acquireFence.fds.size() > 1 || !acquireFence.ints.empty()) {
        return Failure{"acquire fence has " + std::to_string(acquireFence.fds.size()) +
                       " descriptors and " + std::to_string(acquireFence.ints.size()) +
                       " integers: it is one descriptor or nothing"};
    }
    ImportedBuffer imported;
    if (!acquireFence.fds.empty()) {
        imported.m_fence = acquireFence.fds[0].dup();
        if (imported.m_fence.get() < 0) return Failure{"acquire fence cannot be duplicated"};
    }
    native_handle_t* raw = ::android::makeFromAidl(handle);
    if (raw == nullptr) return Failure{"the buffer handle is too large"};
    const Result<void*> own = Ask("import the buffer handle", [&](const auto& take) {
        return DeviceMapper()->importBuffer(hidl_handle(raw), take);
    });
    native_handle_delete(raw);
    if (!own.Ok()) return own.GetFailure();
    imported.m_handle = std::shared_ptr<void>(own.Value(), [](void* buffer) {
        const Error freed = DeviceMapper()->freeBuffer(buffer).withDefault(Error::NO_RESOURCES);
        if (freed != Error::NONE) LogProblem("the mapper does not free a buffer");
    });
    const Result<PicturePlaces> picture = FindPicture(own.Value(), stream);
    if (!picture.Ok()) return picture.GetFailure();
    imported.m_picture = picture.Value();
    return imported;
}

Result<LockedBuffer> LockedBuffer::Lock(const ImportedBuffer& buffer, Access access) {
    const BufferUsage usage =
            access == Access::kRead ? BufferUsage::CPU_READ_OFTEN : BufferUsage::CPU_WRITE_OFTEN;
    NATIVE_HANDLE_DECLARE_STORAGE(storage, 1, 0);
    native_handle_t* const fence = native_handle_init(storage, 1, 0);
    fence->data[0] = buffer.m_fence.get();
    const Result<void*> data = Ask("lock the buffer", [&](const auto& take) {
        return DeviceMapper()->lock(buffer.m_handle.get(), static_cast<uint64_t>(usage), {},
                                    hidl_handle(fence->data[0] < 0 ? nullptr : fence), take);
    });
    if (!data.Ok()) return data.GetFailure();
    LockedBuffer locked;
    locked.m_picture = buffer.m_picture;
    locked.m_data = std::shared_ptr<uint8_t>(
            static_cast<uint8_t*>(data.Value()), [handle = buffer.m_handle](uint8_t*) {
                Error result = Error::NO_RESOURCES;
                const auto unlocked = DeviceMapper()->unlock(
                        handle.get(), [&](Error e, const hidl_handle&) { result = e; });
                if (!unlocked.isOk() || result != Error::NONE) {
                    LogProblem("the mapper does not unlock a buffer");
                }
            });
    return locked;
}

imaging::MutableRawView LockedBuffer::Raw() const {
    return {Data() + m_picture.first, m_picture.width, m_picture.height, m_picture.strideBytes};
}

imaging::MutableNv12View LockedBuffer::Nv12() const {
    return {Data() + m_picture.first, Data() + m_picture.second, m_picture.width, m_picture.height,
            m_picture.strideBytes};
}

}  // namespace offlinecamera
