// Mapper 4.0 of host buffers.
#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <android/log.h>
#include <gralloctypes/Gralloc4.h>
#include <graphics/fence.h>
#include <graphics/imported_buffers.h>

#include <cstring>
#include <string>
#include <vector>

namespace graphics {

namespace {

namespace gralloc4 = ::android::gralloc4;
using ::aidl::android::hardware::graphics::common::PlaneLayout;
using ::aidl::android::hardware::graphics::common::PlaneLayoutComponent;
using ::aidl::android::hardware::graphics::common::PlaneLayoutComponentType;
using ::aidl::android::hardware::graphics::common::StandardMetadataType;
using ::android::hardware::hidl_handle;
using ::android::hardware::Return;
using ::android::hardware::Void;
using ::android::hardware::graphics::mapper::V4_0::Error;
using ::android::hardware::graphics::mapper::V4_0::IMapper;
using base::Result;
using Bytes = ::android::hardware::hidl_vec<uint8_t>;
using HidlFormat = ::android::hardware::graphics::common::V1_2::PixelFormat;

static_assert(kFormatBlob == static_cast<int32_t>(HidlFormat::BLOB));
static_assert(kFormatYcbcr420 == static_cast<int32_t>(HidlFormat::YCBCR_420_888));
static_assert(kFormatRaw10 == static_cast<int32_t>(HidlFormat::RAW10));
static_assert(kComponentY == static_cast<int64_t>(PlaneLayoutComponentType::Y));
static_assert(kComponentCb == static_cast<int64_t>(PlaneLayoutComponentType::CB));
static_assert(kComponentCr == static_cast<int64_t>(PlaneLayoutComponentType::CR));
static_assert(kComponentRaw == static_cast<int64_t>(PlaneLayoutComponentType::RAW));

std::vector<PlaneLayout> PlaneLayouts(const BufferLayout& layout) {
    std::vector<PlaneLayout> planes;
    for (const Plane& plane : layout.planes) {
        PlaneLayout out;
        for (const PlaneComponent& component : plane.components) {
            PlaneLayoutComponent entry;
            entry.type = {GRALLOC4_STANDARD_PLANE_LAYOUT_COMPONENT_TYPE, component.type};
            entry.offsetInBits = component.offsetInBits;
            entry.sizeInBits = component.sizeInBits;
            out.components.push_back(entry);
        }
        out.offsetInBytes = static_cast<int64_t>(plane.offset);
        out.sampleIncrementInBits = plane.sampleIncrementInBits;
        out.strideInBytes = plane.stride;
        out.widthInSamples = plane.width;
        out.heightInSamples = plane.height;
        out.totalSizeInBytes = static_cast<int64_t>(plane.size);
        out.horizontalSubsampling = plane.subsampling;
        out.verticalSubsampling = plane.subsampling;
        planes.push_back(std::move(out));
    }
    return planes;
}

// Width, height, requested pixel format, allocation size and plane layouts; kUnsupported for any
// other type.
Result<Bytes> EncodeMetadata(const BufferInfo& info, const IMapper::MetadataType& type) {
    Bytes bytes;
    const auto standard = gralloc4::isStandardMetadataType(type)
                                  ? static_cast<StandardMetadataType>(type.value)
                                  : StandardMetadataType::INVALID;
    switch (standard) {
        case StandardMetadataType::WIDTH:
            gralloc4::encodeWidth(info.description.width, &bytes);
            return bytes;
        case StandardMetadataType::HEIGHT:
            gralloc4::encodeHeight(info.description.height, &bytes);
            return bytes;
        case StandardMetadataType::PIXEL_FORMAT_REQUESTED:
            gralloc4::encodePixelFormatRequested(static_cast<HidlFormat>(info.description.format),
                                                 &bytes);
            return bytes;
        case StandardMetadataType::ALLOCATION_SIZE:
            gralloc4::encodeAllocationSize(info.layout.size, &bytes);
            return bytes;
        case StandardMetadataType::PLANE_LAYOUTS:
            gralloc4::encodePlaneLayouts(PlaneLayouts(info.layout), &bytes);
            return bytes;
        default:
            return Failed(BufferError::kUnsupported, "there is no metadata of type " +
                                                             std::string(type.name) + " " +
                                                             std::to_string(type.value));
    }
}

// The descriptor of a fence handle (borrowed): -1 for none, which a null or empty handle is.
// kBadValue for any other shape.
Result<int> FenceDescriptor(const native_handle_t* fence) {
    if (fence == nullptr || (fence->numFds == 0 && fence->numInts == 0)) return -1;
    if (fence->numFds != 1 || fence->numInts != 0 || fence->data[0] < 0) {
        return Failed(BufferError::kBadValue, "an acquire fence is one open descriptor or nothing");
    }
    return fence->data[0];
}

// Logs a failure and returns its number.
template <class T>
Error Report(const char* operation, const Result<T>& result) {
    if (!result.Ok()) {
        __android_log_print(ANDROID_LOG_ERROR, "GraphicsMapper", "%s: %s", operation,
                            result.Error().c_str());
    }
    return static_cast<Error>(ErrorOf(result));
}

// Hands the callback the value, or the error and an empty one.
template <class T, class Callback>
Return<void> Answer(const char* operation, const Result<T>& result, const Callback& callback) {
    callback(Report(operation, result), result.Ok() ? result.Value() : T());
    return Void();
}

Result<Bytes> EncodeDescriptor(const IMapper::BufferDescriptorInfo& description) {
    // The allocator judges a description; here it only must not be empty.
    if (description.width == 0 || description.height == 0 || description.layerCount == 0) {
        return Failed(BufferError::kBadValue, "width, height and layers must not be zero");
    }
    Bytes descriptor;
    gralloc4::encodeBufferDescriptorInfo(description, &descriptor);
    return descriptor;
}

class HidlMapper final : public IMapper {
  public:
    Return<void> createDescriptor(const BufferDescriptorInfo& description,
                                  createDescriptor_cb _hidl_cb) override {
        return Answer("createDescriptor", EncodeDescriptor(description), _hidl_cb);
    }

    Return<void> importBuffer(const hidl_handle& rawHandle, importBuffer_cb _hidl_cb) override {
        return Answer("importBuffer", m_buffers.Import(rawHandle), _hidl_cb);
    }

    Return<Error> freeBuffer(void* buffer) override {
        return Report("freeBuffer", m_buffers.Release(buffer));
    }

    Return<void> lock(void* buffer, uint64_t cpuUsage, const Rect& accessRegion,
                      const hidl_handle& acquireFence, lock_cb _hidl_cb) override {
        return Answer("lock", Lock(buffer, cpuUsage, accessRegion, acquireFence), _hidl_cb);
    }

    Return<void> unlock(void* buffer, unlock_cb _hidl_cb) override {
        _hidl_cb(Report("unlock", m_buffers.Unlock(buffer)), hidl_handle());
        return Void();
    }

    // All processes share the memory: there is nothing to write back or to fetch.
    Return<void> flushLockedBuffer(void* buffer, flushLockedBuffer_cb _hidl_cb) override {
        _hidl_cb(Report("flushLockedBuffer", m_buffers.RequireLocked(buffer)), hidl_handle());
        return Void();
    }

    Return<Error> rereadLockedBuffer(void* buffer) override {
        return Report("rereadLockedBuffer", m_buffers.RequireLocked(buffer));
    }

    Return<void> get(void* buffer, const MetadataType& metadataType, get_cb _hidl_cb) override {
        return Answer("get", Metadata(buffer, metadataType), _hidl_cb);
    }

  private:
    Result<void*> Lock(void* buffer, uint64_t cpuUsage, const Rect& rect,
                       const native_handle_t* fence) {
        const Result<int> descriptor = FenceDescriptor(fence);
        if (!descriptor.Ok()) return descriptor.GetFailure();
        return m_buffers.Lock(buffer, cpuUsage, {rect.left, rect.top, rect.width, rect.height},
                              descriptor.Value());
    }

    Result<Bytes> Metadata(void* buffer, const MetadataType& type) {
        const auto info = m_buffers.Describe(buffer);
        if (!info.Ok()) return info.GetFailure();
        return EncodeMetadata(info.Value(), type);
    }

    ImportedBuffers& m_buffers = ImportedBuffers::Instance();
};

}  // namespace

// A new mapper (the caller takes the first reference), or null for an unknown instance. All of
// them know the same buffers.
extern "C" __attribute__((visibility("default"))) IMapper* HIDL_FETCH_IMapper(const char* name) {
    if (name == nullptr || std::strcmp(name, "default") != 0) return nullptr;
    return new HidlMapper;
}

}  // namespace graphics
