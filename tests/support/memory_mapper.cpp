// Buffers in this process's memory behind the mapper's and the allocator's interfaces.

#include "tests/support/memory_mapper.h"

#include <fcntl.h>
#include <gralloctypes/Gralloc4.h>
#include <gtest/gtest.h>

#include <cstdlib>

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

template <class Deliver>
Return<void> MemoryMapper::Answer(const std::string& operation, const std::string& arguments,
                                  Error error, Deliver deliver) {
    m_calls->push_back(operation + arguments);
    if (broken.count(operation) != 0) return Status::fromStatusT(::android::DEAD_OBJECT);
    if (error == Error::NONE && errors.count(operation) != 0) error = errors.at(operation);
    deliver(error);
    return fake::Void();
}

Error MemoryMapper::Check(void* buffer) const {
    return m_buffers.count(buffer) != 0 ? Error::NONE : Error::BAD_BUFFER;
}

Return<void> MemoryMapper::createDescriptor(const BufferDescriptorInfo& info,
                                            createDescriptor_cb cb) {
    const std::string text = Format(
            " '%s' %ux%u layers %u format %d usage %lu reserved %lu", info.name.c_str(), info.width,
            info.height, info.layerCount, static_cast<int>(info.format),
            static_cast<unsigned long>(info.usage), static_cast<unsigned long>(info.reservedSize));
    return Answer("createDescriptor", text, Error::NONE,
                  [&](Error error) { cb(error, std::vector<uint8_t>(text.begin(), text.end())); });
}

Return<void> MemoryMapper::importBuffer(const fake::hidl_handle& raw, importBuffer_cb cb) {
    return Answer("importBuffer", "", Error::NONE, [&](Error error) {
        if (error != Error::NONE) return cb(error, this);
        EXPECT_NE(raw.getNativeHandle(), nullptr);
        native_handle_t* const imported = native_handle_clone(raw.getNativeHandle());
        m_buffers[imported].reset(static_cast<char*>(calloc(1, bufferBytes)));
        cb(error, imported);
    });
}

Return<Error> MemoryMapper::freeBuffer(void* buffer) {
    Error answer{};
    const auto sent = Answer("freeBuffer", "", Check(buffer), [&](Error error) {
        answer = error;
        if (error != Error::NONE) return;
        m_buffers.erase(buffer);
        native_handle_close(static_cast<native_handle_t*>(buffer));
        native_handle_delete(static_cast<native_handle_t*>(buffer));
    });
    if (!sent.isOk()) return Status::fromStatusT(::android::DEAD_OBJECT);
    return answer;
}

Return<void> MemoryMapper::lock(void* buffer, uint64_t usage, const fake::IMapper::Rect& region,
                                const fake::hidl_handle& fence, lock_cb cb) {
    EXPECT_EQ(region.left | region.top | region.width | region.height, 0);
    EXPECT_EQ(fence.getNativeHandle(), nullptr);
    return Answer("lock", Format(" %lu", static_cast<unsigned long>(usage)), Check(buffer),
                  [&](Error error) { cb(error, Memory(buffer)); });
}

Return<void> MemoryMapper::unlock(void* buffer, unlock_cb cb) {
    return Answer("unlock", "", Check(buffer), [&](Error error) { cb(error, nullptr); });
}

Return<void> MemoryMapper::get(void* buffer, const MetadataType& type, get_cb cb) {
    const std::string text = Format(" %s %ld", type.name.c_str(), static_cast<long>(type.value));
    return Answer("get", text, Check(buffer), [&](Error error) {
        fake::hidl_vec<uint8_t> encoded;
        ::android::gralloc4::encodeAllocationSize(bufferBytes, &encoded);
        cb(error, metadata.has_value() ? fake::hidl_vec<uint8_t>(*metadata) : encoded);
    });
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
