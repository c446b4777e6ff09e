// Buffers for tests.
#include "graphics.h"

#include <aidlcommonsupport/NativeHandle.h>
#include <graphics/buffer_handle.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

namespace offlinecamera {

::android::sp<ImportedBuffer::IMapper> TestMapper() {
    static const auto* mapper =
            new ::android::sp<ImportedBuffer::IMapper>(ImportedBuffer::IMapper::getService());
    if (*mapper == nullptr) {
        fprintf(stderr, "no mapper: STANDIN_HAL_PATH must name the folder of the HAL libraries\n");
        abort();
    }
    return *mapper;
}

Stream MakeStream(int32_t id, StreamType type, PixelFormat format, int32_t width, int32_t height,
                  int32_t bufferSize) {
    Stream stream;
    stream.id = id;
    stream.streamType = type;
    stream.width = width;
    stream.height = height;
    stream.format = format;
    stream.usage = ::aidl::android::hardware::graphics::common::BufferUsage::CPU_READ_OFTEN;
    stream.bufferSize = bufferSize;
    return stream;
}

OfflineSessionConfigureInfo Configuration(OpMode mode) {
    const auto raw = [](int32_t id) {
        return MakeStream(id, StreamType::INPUT, PixelFormat::RAW10, kWidth, kHeight);
    };
    const auto yuv = [](int32_t id, StreamType type, int32_t width, int32_t height) {
        return MakeStream(id, type, PixelFormat::YCBCR_420_888, width, height);
    };
    OfflineSessionConfigureInfo info;
    info.cameraId = "2";
    info.opMode = static_cast<int32_t>(mode);
    switch (mode) {
        case OpMode::kB2Y:
            info.streams = {raw(0), yuv(1, StreamType::OUTPUT, 12, 8)};
            break;
        case OpMode::kY2J:
            info.streams = {yuv(0, StreamType::INPUT, kWidth, kHeight),
                            MakeStream(1, StreamType::OUTPUT, PixelFormat::BLOB, kWidth, kHeight,
                                       kBlobSize)};
            break;
        case OpMode::kMMF:
            info.streams = {raw(0), yuv(1, StreamType::INPUT, 8, 6),
                            yuv(2, StreamType::OUTPUT, 12, 8)};
            break;
    }
    return info;
}

NativeHandle Allocate(const Stream& stream, int32_t spare) {
    const bool blob = stream.format == PixelFormat::BLOB;
    graphics::BufferDescription description;
    description.name = "test";
    description.width = static_cast<uint32_t>(blob ? stream.bufferSize + spare : stream.width);
    description.height = static_cast<uint32_t>(blob ? 1 : stream.height);
    description.layerCount = 1;
    description.format = static_cast<int32_t>(stream.format);
    description.usage = static_cast<uint64_t>(stream.usage);
    const auto created = graphics::CreateBuffer(description);
    if (!created.Ok()) {
        ADD_FAILURE() << created.Error();
        return NativeHandle();
    }
    return ::android::dupToAidl(created.Value().get());
}

NativeHandle Dup(const NativeHandle& handle) {
    native_handle_t* borrowed = ::android::makeFromAidl(handle);
    NativeHandle copy = ::android::dupToAidl(borrowed);
    native_handle_delete(borrowed);
    return copy;
}

void WithBuffer(const NativeHandle& handle, const Stream& stream, Access access,
                const std::function<void(const LockedBuffer&)>& use) {
    ImportedBuffer buffer;
    ASSERT_EQ(buffer.Import(TestMapper(), handle, {}, stream), "");
    LockedBuffer locked;
    ASSERT_EQ(locked.Lock(buffer, access), "");
    use(locked);
}

}  // namespace offlinecamera
