// The streams of the operation modes, and graphics buffers for them by the device's allocator and
// mapper.
#pragma once

#include <aidl/android/hardware/camera/device/Stream.h>
#include <aidl/android/hardware/common/NativeHandle.h>
#include <aidl/android/hardware/graphics/allocator/IAllocator.h>
#include <aidl/android/hardware/graphics/common/PlaneLayout.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineSessionConfigureInfo.h>
#include <android/hardware/graphics/mapper/4.0/IMapper.h>

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace conformance {

using ::aidl::android::hardware::camera::device::Stream;
using ::aidl::android::hardware::camera::device::StreamType;
using ::aidl::android::hardware::common::NativeHandle;
using ::aidl::android::hardware::graphics::common::BufferUsage;
using ::aidl::android::hardware::graphics::common::PixelFormat;
using Configuration =
        ::aidl::vendor::zel::hardware::camera::offlinecamera::OfflineSessionConfigureInfo;

enum Mode : int32_t { kB2Y = 0, kY2J = 1, kMMF = 3 };
inline constexpr Mode kModes[] = {kB2Y, kY2J, kMMF};

const char* NameOf(int32_t mode);
size_t FramesOf(int32_t mode);  // input frames of one request
bool IsInput(const Stream& stream);

// All input streams, then the output stream.
Configuration ConfigurationOf(Mode mode);

// A plane's picture, and the bytes of one of its rows without padding.
using Plane = ::aidl::android::hardware::graphics::common::PlaneLayout;
int64_t RowBytes(const Plane& plane);

// A buffer that is imported into this process. Used by one thread at a time.
class Buffer {
  public:
    using Mapper = ::android::hardware::graphics::mapper::V4_0::IMapper;
    using Allocator = ::aidl::android::hardware::graphics::allocator::IAllocator;

    // A BLOB stream gets a buffer of its buffer size by 1.
    Buffer(Allocator& allocator, ::android::sp<Mapper> mapper, const Stream& stream);

    // A duplicate; empty where the buffer could not be made.
    NativeHandle Handle() const;
    // Those of the picture; none of a BLOB.
    const std::vector<Plane>& Planes() const { return m_planes; }

    void Fill(uint8_t value);
    std::vector<uint8_t> Copy() const;  // of all its bytes; empty if it cannot be read

  private:
    void Access(const std::function<void(uint8_t* bytes)>& use) const;  // unless the lock fails

    const ::android::sp<Mapper> m_mapper;
    void* m_handle = nullptr;  // until the process ends, as buffers are
    uint64_t m_size = 0;
    std::vector<Plane> m_planes;
};

// All buffers of this process, made when first asked for and used again and again. Any thread.
class Pool {
  public:
    Pool();

    // Whether allocator and mapper are there; nothing else may be called where they are not.
    bool Ready() const { return m_allocator != nullptr && m_mapper != nullptr; }
    // One of the stream's buffers.
    Buffer& Get(const Stream& stream, size_t number = 0);

  private:
    std::shared_ptr<Buffer::Allocator> m_allocator;
    ::android::sp<Buffer::Mapper> m_mapper;
    std::mutex m_lock;  // guards the buffers
    std::map<std::pair<Stream, size_t>, Buffer> m_buffers;
};

}  // namespace conformance
