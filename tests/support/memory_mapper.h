// A mapper and an allocator whose buffers lie in this process, and which answer as told.
#pragma once

#include <aidl/android/hardware/graphics/allocator/BnAllocator.h>
#include <cutils/native_handle.h>

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tests/host/graphics-mapper/fake_mapper.h"

namespace test {

// The calls that a mapper and an allocator have got, in order, each with its arguments.
using Calls = std::vector<std::string>;

// Imported handles are distinct from raw ones and own their descriptors; what a test has not freed
// goes with the mapper.
class MemoryMapper : public fake::FakeMapper {
  public:
    explicit MemoryMapper(Calls* calls) : FakeMapper(fake::Error::UNSUPPORTED), m_calls(calls) {}
    ~MemoryMapper() override;

    // The memory of an imported handle; null for any other.
    char* Memory(const void* buffer);

    // What is told, by operation name: an error to answer with, which comes together with a result
    // that must not be taken, and a failure of the transport.
    std::map<std::string, fake::Error> errors;
    std::set<std::string> broken;
    bool remote = false;
    size_t bufferBytes = 4096;  // of a buffer; also its ALLOCATION_SIZE
    // In place of the encoded ALLOCATION_SIZE.
    std::optional<std::vector<uint8_t>> metadata;

    bool isRemote() const override { return remote; }
    fake::Return<void> createDescriptor(const BufferDescriptorInfo& info,
                                        createDescriptor_cb cb) override;
    fake::Return<void> importBuffer(const fake::hidl_handle& raw, importBuffer_cb cb) override;
    fake::Return<fake::Error> freeBuffer(void* buffer) override;
    fake::Return<void> lock(void* buffer, uint64_t usage, const fake::IMapper::Rect& region,
                            const fake::hidl_handle& fence, lock_cb cb) override;
    fake::Return<void> unlock(void* buffer, unlock_cb cb) override;
    fake::Return<void> get(void* buffer, const MetadataType& type, get_cb cb) override;

  private:
    struct Freed {
        void operator()(char* bytes) const { free(bytes); }
    };

    // Records the call, and hands this error, or else the one that is told, to `deliver`.
    template <class Deliver>
    fake::Return<void> Answer(const std::string& operation, const std::string& arguments,
                              fake::Error error, Deliver deliver);
    fake::Error Check(void* buffer) const;  // that it is an imported one

    Calls* const m_calls;
    std::map<void*, std::unique_ptr<char, Freed>> m_buffers;  // by imported handle
};

class FakeAllocator : public ::aidl::android::hardware::graphics::allocator::BnAllocator {
  public:
    using AllocationResult = ::aidl::android::hardware::graphics::allocator::AllocationResult;
    using Info = ::aidl::android::hardware::graphics::allocator::BufferDescriptorInfo;

    explicit FakeAllocator(Calls* calls) : m_calls(calls) {}

    // What is told.
    int32_t serviceError = 0;  // answered by allocate when not 0
    size_t buffers = 1;        // given by allocate, whatever is asked for
    bool emptyHandles = false;
    int32_t stride = 64;
    std::optional<std::string> suffix;  // none: getIMapperLibrarySuffix leaves its answer alone
    bool suffixFails = false;           // in spite of its answer
    int lastDescriptor = -1;            // number that the last allocation gave away

    ::ndk::ScopedAStatus allocate(const std::vector<uint8_t>& descriptor, int32_t count,
                                  AllocationResult* result) override;
    ::ndk::ScopedAStatus allocate2(const Info&, int32_t, AllocationResult*) override {
        return ::ndk::ScopedAStatus::fromStatus(STATUS_INVALID_OPERATION);
    }
    ::ndk::ScopedAStatus isSupported(const Info&, bool*) override {
        return ::ndk::ScopedAStatus::fromStatus(STATUS_INVALID_OPERATION);
    }
    ::ndk::ScopedAStatus getIMapperLibrarySuffix(std::string* out) override;

  private:
    Calls* const m_calls;
};

}  // namespace test
