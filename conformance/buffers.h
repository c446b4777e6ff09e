// Graphics buffers of streams, by the device's allocator and mapper.
#pragma once

#include <aidl/android/hardware/common/NativeHandle.h>
#include <aidl/android/hardware/graphics/allocator/IAllocator.h>
#include <android/hardware/graphics/mapper/4.0/IMapper.h>

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "streams.h"

namespace conformance {

using ::aidl::android::hardware::common::NativeHandle;

// Where the rows of a plane's picture are, in bytes.
struct Plane {
    std::string name;
    uint64_t offset = 0;
    uint64_t stride = 0;
    uint64_t rowBytes = 0;
    uint64_t rows = 0;
};

// One buffer, imported into this process; frees it at the end. Used by one thread at a time.
class Buffer {
  public:
    using Mapper = ::android::hardware::graphics::mapper::V4_0::IMapper;
    using Allocator = ::aidl::android::hardware::graphics::allocator::IAllocator;

    // A BLOB stream gets a buffer of its buffer size by 1. Problem() tells of a failure.
    Buffer(Allocator& allocator, ::android::sp<Mapper> mapper, const Stream& stream);
    ~Buffer();
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    // Why there is no buffer; empty where there is one.
    const std::string& Problem() const { return m_problem; }

    // Independent of the buffer; empty where there is none.
    NativeHandle Handle() const;

    uint64_t Size() const { return m_size; }

    // The picture's planes; none of a BLOB, and none where the mapper does not tell.
    const std::vector<Plane>& Planes() const { return m_planes; }

    // Calls `use` with the first byte, for reading and writing. Not called where the lock fails.
    bool Access(const std::function<void(uint8_t* bytes)>& use);

    void Fill(uint8_t value);

  private:
    void ReadGeometry();

    const ::android::sp<Mapper> m_mapper;
    std::string m_problem;
    void* m_handle = nullptr;
    uint64_t m_size = 0;
    std::vector<Plane> m_planes;
};

// All buffers of this process: made when first asked for, kept to the end, as their content does
// not matter to most checks. Any thread.
class Pool {
  public:
    // Connects to the services; Problem() tells of a failure.
    Pool();

    const std::string& Problem() const { return m_problem; }

    // One of the buffers of the stream's shape and direction.
    Buffer& Get(const Stream& stream, size_t number = 0);

  private:
    std::shared_ptr<Buffer::Allocator> m_allocator;
    ::android::sp<Buffer::Mapper> m_mapper;
    std::string m_problem;
    std::mutex m_lock;  // guards the buffers
    std::map<std::vector<int64_t>, std::unique_ptr<Buffer>> m_buffers;
};

}  // namespace conformance
