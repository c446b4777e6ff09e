// The stream sets; allocates, imports, locks and describes buffers.
#include "buffers.h"

#include <aidlcommonsupport/NativeHandle.h>
#include <android/binder_manager.h>
#include <gralloctypes/Gralloc4.h>

#include <cstring>

namespace conformance {

namespace {

namespace gralloc4 = ::android::gralloc4;
namespace metadata = ::aidl::android::hardware::camera::metadata;
using ::aidl::android::hardware::graphics::common::Dataspace;
using ::android::hardware::hidl_handle;
using ::android::hardware::graphics::mapper::V4_0::Error;

constexpr uint64_t kCpuUsage = static_cast<uint64_t>(BufferUsage::CPU_READ_OFTEN) |
                               static_cast<uint64_t>(BufferUsage::CPU_WRITE_OFTEN);

Stream MakeStream(int32_t id, StreamType type, PixelFormat format, int32_t width, int32_t height) {
    const bool blob = format == PixelFormat::BLOB, output = type == StreamType::OUTPUT;
    Stream stream;
    stream.id = id;
    stream.streamType = type;
    stream.width = width;
    stream.height = height;
    stream.format = format;
    stream.usage = output && !blob ? BufferUsage::CPU_READ_RARELY : BufferUsage::CPU_READ_OFTEN;
    stream.dataSpace = blob ? Dataspace::JFIF : Dataspace::UNKNOWN;
    stream.bufferSize = blob ? width * height * 2 : 0;
    stream.groupId = -1;
    stream.sensorPixelModesUsed = {metadata::SensorPixelMode::ANDROID_SENSOR_PIXEL_MODE_DEFAULT};
    stream.dynamicRangeProfile = metadata::RequestAvailableDynamicRangeProfilesMap(1);  // STANDARD
    stream.useCase = metadata::ScalerAvailableStreamUseCases(output ? 2 : 0);  // still capture
    return stream;
}

}  // namespace

const char* NameOf(int32_t mode) {
    return mode == kB2Y ? "B2Y" : mode == kY2J ? "Y2J" : "MMF";
}

size_t FramesOf(int32_t mode) {
    return mode == kMMF ? 3 : 1;
}

bool IsInput(const Stream& stream) {
    return stream.streamType == StreamType::INPUT;
}

int64_t RowBytes(const Plane& plane) {
    return plane.widthInSamples * plane.sampleIncrementInBits / 8;
}

Configuration ConfigurationOf(Mode mode) {
    const auto in = StreamType::INPUT, out = StreamType::OUTPUT;
    const auto raw = PixelFormat::RAW10, yuv = PixelFormat::YCBCR_420_888;
    const bool file = mode == kY2J;
    Configuration info;
    info.cameraId = "2";
    info.opMode = mode;
    info.streams = {file ? MakeStream(0, in, yuv, 4000, 3000) : MakeStream(0, in, raw, 4096, 3072)};
    if (mode == kMMF) info.streams.push_back(MakeStream(1, in, yuv, 640, 480));
    info.streams.push_back(
            MakeStream(mode == kMMF ? 2 : 1, out, file ? PixelFormat::BLOB : yuv, 4000, 3000));
    return info;
}

Buffer::Buffer(Allocator& allocator, ::android::sp<Mapper> mapper, const Stream& stream)
    : m_mapper(std::move(mapper)) {
    const bool blob = stream.format == PixelFormat::BLOB;
    Mapper::BufferDescriptorInfo info{};
    info.width = static_cast<uint32_t>(blob ? stream.bufferSize : stream.width);
    info.height = blob ? 1 : static_cast<uint32_t>(stream.height);
    info.layerCount = 1;
    info.format = static_cast<decltype(info.format)>(stream.format);
    info.usage = static_cast<uint64_t>(stream.usage) | kCpuUsage;
    std::vector<uint8_t> descriptor;  // stays empty after an error, which the allocator refuses
    const auto described =
            m_mapper->createDescriptor(info, [&](Error, const auto& made) { descriptor = made; });
    ::aidl::android::hardware::graphics::allocator::AllocationResult made;
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wdeprecated-declarations"  // the form for mapper 4.0
    const auto allocated = allocator.allocate(descriptor, 1, &made);
#pragma clang diagnostic pop
    if (!described.isOk() || !allocated.isOk() || made.buffers.size() != 1) return;
    native_handle_t* const raw = ::android::makeFromAidl(made.buffers[0]);
    const auto imported = m_mapper->importBuffer(hidl_handle(raw), [&](Error, void* buffer) {
        m_handle = buffer;  // null after an error
    });
    native_handle_delete(raw);
    if (!imported.isOk() || m_handle == nullptr) return;
    const auto read = [&](const Mapper::MetadataType& type, const auto& decode, auto* out) {
        const auto called = m_mapper->get(m_handle, type, [&](Error error, const auto& metadata) {
            if (error == Error::NONE) decode(metadata, out);
        });
        (void)called.isOk();
    };
    read(gralloc4::MetadataType_AllocationSize, gralloc4::decodeAllocationSize, &m_size);
    read(gralloc4::MetadataType_PlaneLayouts, gralloc4::decodePlaneLayouts, &m_planes);
}

NativeHandle Buffer::Handle() const {
    if (m_handle == nullptr) return {};
    return ::android::dupToAidl(static_cast<const native_handle_t*>(m_handle));
}

void Buffer::Fill(uint8_t value) {
    Access([=](uint8_t* bytes) { memset(bytes, value, m_size); });
}

std::vector<uint8_t> Buffer::Copy() const {
    std::vector<uint8_t> copy;
    Access([&](const uint8_t* bytes) { copy.assign(bytes, bytes + m_size); });
    return copy;
}

void Buffer::Access(const std::function<void(uint8_t* bytes)>& use) const {
    void* bytes = nullptr;
    if (m_handle == nullptr) return;
    const auto locked = m_mapper->lock(m_handle, kCpuUsage, Mapper::Rect{}, hidl_handle(),
                                       [&](Error, void* data) { bytes = data; });
    if (!locked.isOk() || bytes == nullptr) return;
    use(static_cast<uint8_t*>(bytes));
    (void)m_mapper->unlock(m_handle, [](Error, const hidl_handle&) {}).isOk();
}

Pool::Pool() : m_mapper(Buffer::Mapper::getService()) {
    const std::string name = std::string(Buffer::Allocator::descriptor) + "/default";
    const ndk::SpAIBinder binder(AServiceManager_checkService(name.c_str()));
    m_allocator = Buffer::Allocator::fromBinder(binder);
}

Buffer& Pool::Get(const Stream& stream, size_t number) {
    const std::lock_guard<std::mutex> guard(m_lock);
    const std::pair<Stream, size_t> key(stream, number);
    return m_buffers.try_emplace(key, *m_allocator, m_mapper, stream).first->second;
}

}  // namespace conformance
