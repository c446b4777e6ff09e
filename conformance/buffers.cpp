// Allocates, imports, locks and describes buffers.
#include "buffers.h"

#include <aidlcommonsupport/NativeHandle.h>
#include <android/binder_manager.h>
#include <gralloctypes/Gralloc4.h>

#include <cstring>

#include "check.h"

namespace conformance {

namespace {

namespace gralloc4 = ::android::gralloc4;
using ::aidl::android::hardware::graphics::allocator::AllocationResult;
using ::aidl::android::hardware::graphics::common::BufferUsage;
using ::aidl::android::hardware::graphics::common::PlaneLayout;
using ::aidl::android::hardware::graphics::common::PlaneLayoutComponentType;
using ::android::hardware::hidl_handle;
using ::android::hardware::hidl_vec;
using ::android::hardware::graphics::mapper::V4_0::Error;
using HidlFormat = ::android::hardware::graphics::common::V1_2::PixelFormat;

constexpr uint64_t kCpuUsage = static_cast<uint64_t>(BufferUsage::CPU_READ_OFTEN) |
                               static_cast<uint64_t>(BufferUsage::CPU_WRITE_OFTEN);

hidl_vec<uint8_t> Describe(Buffer::Mapper& mapper, const Stream& stream) {
    const bool blob = stream.format == PixelFormat::BLOB;
    Buffer::Mapper::BufferDescriptorInfo info{};
    info.width = static_cast<uint32_t>(blob ? stream.bufferSize : stream.width);
    info.height = blob ? 1 : static_cast<uint32_t>(stream.height);
    info.layerCount = 1;
    info.format = static_cast<HidlFormat>(stream.format);
    info.usage = static_cast<uint64_t>(stream.usage) | kCpuUsage;
    hidl_vec<uint8_t> descriptor;
    const auto called = mapper.createDescriptor(info, [&](Error, const auto& made) {
        descriptor = made;  // empty after an error; the allocator refuses that
    });
    (void)called.isOk();
    return descriptor;
}

// The picture's part of a plane. "Y", "CbCr" and so on by the components.
Plane PictureOf(const PlaneLayout& layout) {
    static constexpr struct {
        PlaneLayoutComponentType type;
        const char* name;
    } kComponents[] = {{PlaneLayoutComponentType::Y, "Y"},
                       {PlaneLayoutComponentType::CB, "Cb"},
                       {PlaneLayoutComponentType::CR, "Cr"},
                       {PlaneLayoutComponentType::RAW, "RAW"}};
    Plane plane;
    for (const auto& component : layout.components) {
        for (const auto& [type, name] : kComponents) {
            if (component.type.value == static_cast<int64_t>(type)) plane.name += name;
        }
    }
    plane.offset = static_cast<uint64_t>(layout.offsetInBytes);
    plane.stride = static_cast<uint64_t>(layout.strideInBytes);
    plane.rowBytes =
            static_cast<uint64_t>(layout.widthInSamples * layout.sampleIncrementInBits / 8);
    plane.rows = static_cast<uint64_t>(layout.heightInSamples);
    return plane;
}

}  // namespace

Buffer::Buffer(Allocator& allocator, ::android::sp<Mapper> mapper, const Stream& stream)
    : m_mapper(std::move(mapper)) {
    const std::vector<uint8_t> descriptor = Describe(*m_mapper, stream);
    AllocationResult made;
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wdeprecated-declarations"  // the form for mapper 4.0
    const auto status = allocator.allocate(descriptor, 1, &made);
#pragma clang diagnostic pop
    if (!status.isOk() || made.buffers.size() != 1) {
        m_problem =
                Say("the allocator gives no ", stream.width, " x ", stream.height,
                    " buffer of format ", toString(stream.format), ": ", status.getDescription());
        return;
    }
    native_handle_t* const raw = ::android::makeFromAidl(made.buffers[0]);
    const auto called = m_mapper->importBuffer(hidl_handle(raw), [&](Error error, void* buffer) {
        if (error == Error::NONE) m_handle = buffer;
    });
    native_handle_delete(raw);
    if (!called.isOk() || m_handle == nullptr) {
        m_problem = "the mapper does not import a buffer of the allocator";
        return;
    }
    ReadGeometry();
}

Buffer::~Buffer() {
    if (m_handle != nullptr) (void)m_mapper->freeBuffer(m_handle).isOk();
}

void Buffer::ReadGeometry() {
    const auto read = [&](const Mapper::MetadataType& type, const auto& decode) {
        const auto called = m_mapper->get(m_handle, type, [&](Error error, const auto& metadata) {
            if (error == Error::NONE) decode(metadata);
        });
        (void)called.isOk();
    };
    read(gralloc4::MetadataType_AllocationSize,
         [&](const auto& metadata) { gralloc4::decodeAllocationSize(metadata, &m_size); });
    std::vector<PlaneLayout> layouts;
    read(gralloc4::MetadataType_PlaneLayouts,
         [&](const auto& metadata) { gralloc4::decodePlaneLayouts(metadata, &layouts); });
    for (const PlaneLayout& layout : layouts) m_planes.push_back(PictureOf(layout));
    for (const Plane& plane : m_planes) {
        const uint64_t rows = plane.rows == 0 ? 0 : plane.rows - 1;
        if (plane.offset + rows * plane.stride + plane.rowBytes > m_size) {
            m_problem = "the mapper tells of planes outside of the buffer";
        }
    }
}

NativeHandle Buffer::Handle() const {
    if (m_handle == nullptr) return {};
    return ::android::dupToAidl(static_cast<const native_handle_t*>(m_handle));
}

bool Buffer::Access(const std::function<void(uint8_t* bytes)>& use) {
    uint8_t* bytes = nullptr;
    if (m_handle == nullptr) return false;
    const auto locked = m_mapper->lock(m_handle, kCpuUsage, Mapper::Rect{}, hidl_handle(),
                                       [&](Error error, void* data) {
                                           if (error == Error::NONE)
                                               bytes = static_cast<uint8_t*>(data);
                                       });
    if (!locked.isOk() || bytes == nullptr) return false;
    use(bytes);
    const auto unlocked = m_mapper->unlock(m_handle, [](Error, const hidl_handle&) {});
    return unlocked.isOk();
}

void Buffer::Fill(uint8_t value) {
    Access([&](uint8_t* bytes) { memset(bytes, value, m_size); });
}

Pool::Pool() {
    const std::string name = std::string(Buffer::Allocator::descriptor) + "/default";
    m_allocator = Buffer::Allocator::fromBinder(
            ndk::SpAIBinder(AServiceManager_checkService(name.c_str())));
    m_mapper = Buffer::Mapper::getService();
    if (m_allocator == nullptr) m_problem = "no graphics allocator is registered as " + name;
    if (m_mapper == nullptr) m_problem = "there is no graphics mapper 4.0";
}

Buffer& Pool::Get(const Stream& stream, size_t number) {
    const std::lock_guard<std::mutex> guard(m_lock);
    auto& buffer = m_buffers[{static_cast<int64_t>(stream.streamType), stream.width, stream.height,
                              static_cast<int64_t>(stream.format), stream.bufferSize,
                              static_cast<int64_t>(number)}];
    if (buffer == nullptr) buffer = std::make_unique<Buffer>(*m_allocator, m_mapper, stream);
    return *buffer;
}

}  // namespace conformance
