// Buffers in this process's memory behind the mapper's and the allocator's interfaces.

#include "tests/support/memory_mapper.h"

#include <fcntl.h>
#include <gralloctypes/Gralloc4.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <utility>

#include "tests/support/log_capture.h"

namespace test {

using ::android::hardware::Status;
using fake::Error;
using fake::Return;

MemoryMapper::~MemoryMapper() {
    for (const auto& [handle, bytes] : m_buffers) {
        native_handle_close(static_cast<native_handle_t*>(handle));
        native_handle_delete(static_cast<native_handle_t*>(handle));
    }
}

char* MemoryMapper::Memory(const void* buffer) {
    const auto found = m_buffers.find(const_cast<void*>(buffer));
    return found != m_buffers.end() ? found->second.get() : nullptr;
}

Error MemoryMapper::Called(const std::string& operation, const std::string& arguments) {
    m_calls->push_back(operation + arguments);
    const auto told = errors.find(operation);
    return told != errors.end() ? told->second : Error::NONE;
}

Error MemoryMapper::CalledOn(void* buffer, const std::string& operation,
                             const std::string& arguments) {
    const Error told = Called(operation, arguments);
    return m_buffers.count(buffer) == 0 ? Error::BAD_BUFFER : told;
}

Status MemoryMapper::Transport(const std::string& operation) const {
    return broken.count(operation) == 0 ? Status::ok()
                                        : Status::fromStatusT(::android::DEAD_OBJECT);
}

Return<void> MemoryMapper::createDescriptor(const BufferDescriptorInfo& info,
                                            createDescriptor_cb cb) {
    const std::string text = Format(
            " '%s' %ux%u layers %u format %d usage %lu reserved %lu", info.name.c_str(), info.width,
            info.height, info.layerCount, static_cast<int>(info.format),
            static_cast<unsigned long>(info.usage), static_cast<unsigned long>(info.reservedSize));
    const Error error = Called("createDescriptor", text);
    if (Status transport = Transport("createDescriptor"); !transport.isOk()) return transport;
    cb(error, std::vector<uint8_t>(text.begin(), text.end()));
    return fake::Void();
}

Return<void> MemoryMapper::importBuffer(const fake::hidl_handle& raw, importBuffer_cb cb) {
    const Error error = Called("importBuffer");
    if (Status transport = Transport("importBuffer"); !transport.isOk()) return transport;
    void* imported = this;
    if (error == Error::NONE) {
        EXPECT_NE(raw.getNativeHandle(), nullptr);
        imported = native_handle_clone(raw.getNativeHandle());
        m_buffers[imported].reset(static_cast<char*>(calloc(1, bufferBytes)));
    }
    cb(error, imported);
    return fake::Void();
}

Return<Error> MemoryMapper::freeBuffer(void* buffer) {
    const Error error = CalledOn(buffer, "freeBuffer");
    if (Status transport = Transport("freeBuffer"); !transport.isOk()) return transport;
    if (error == Error::NONE) {
        m_buffers.erase(buffer);
        native_handle_close(static_cast<native_handle_t*>(buffer));
        native_handle_delete(static_cast<native_handle_t*>(buffer));
    }
    return error;
}

Return<void> MemoryMapper::lock(void* buffer, uint64_t usage, const fake::IMapper::Rect& region,
                                const fake::hidl_handle& fence, lock_cb cb) {
    EXPECT_EQ(region.left | region.top | region.width | region.height, 0);
    EXPECT_EQ(fence.getNativeHandle(), nullptr);
    const Error error = CalledOn(buffer, "lock", Format(" %lu", static_cast<unsigned long>(usage)));
    if (Status transport = Transport("lock"); !transport.isOk()) return transport;
    cb(error, Memory(buffer));
    return fake::Void();
}

Return<void> MemoryMapper::unlock(void* buffer, unlock_cb cb) {
    const Error error = CalledOn(buffer, "unlock");
    if (Status transport = Transport("unlock"); !transport.isOk()) return transport;
    cb(error, nullptr);
    return fake::Void();
}

Return<void> MemoryMapper::get(void* buffer, const MetadataType& type, get_cb cb) {
    const Error error = CalledOn(
            buffer, "get", Format(" %s %ld", type.name.c_str(), static_cast<long>(type.value)));
    if (Status transport = Transport("get"); !transport.isOk()) return transport;
    fake::hidl_vec<uint8_t> encoded;
    ::android::gralloc4::encodeAllocationSize(bufferBytes, &encoded);
    cb(error, metadata.has_value() ? fake::hidl_vec<uint8_t>(*metadata) : encoded);
    return fake::Void();
}

::ndk::ScopedAStatus FakeAllocator::allocate(const std::vector<uint8_t>& descriptor, int32_t count,
                                             AllocationResult* result) {
    m_calls->push_back("allocate" + std::string(descriptor.begin(), descriptor.end()) +
                       Format(" x%d", count));
    if (serviceError != 0) return ::ndk::ScopedAStatus::fromServiceSpecificError(serviceError);
    result->stride = stride;
    result->buffers.resize(buffers);
    for (auto& buffer : result->buffers) {
        if (emptyHandles) break;
        lastDescriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
        buffer.fds.emplace_back(lastDescriptor);
        buffer.ints = {7, 11};
    }
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus FakeAllocator::getIMapperLibrarySuffix(std::string* out) {
    m_calls->push_back("getIMapperLibrarySuffix");
    if (!suffix.has_value()) return ::ndk::ScopedAStatus::fromStatus(STATUS_FAILED_TRANSACTION);
    *out = *suffix;
    return ::ndk::ScopedAStatus::fromStatus(suffixFails ? STATUS_FAILED_TRANSACTION : STATUS_OK);
}

}  // namespace test
