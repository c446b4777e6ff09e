// Imported buffers: independence, leaks, locks, the zero tail, and use from several threads.
#include <graphics_core/ImportedBuffers.h>
#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <thread>

#include "buffers.h"

namespace graphics {
namespace {

constexpr uint64_t kRead = 3;
constexpr uint64_t kWrite = 3 << 4;
constexpr Region kWhole = {};

class ImportedBuffersTest : public testing::Test {
  protected:
    const native_handle_t* import(const native_handle_t* raw) {
        const native_handle_t* handle = nullptr;
        const Outcome outcome = mBuffers.import(raw, &handle);
        EXPECT_TRUE(outcome.ok()) << outcome.reason;
        return handle;
    }

    uint8_t* lock(const void* buffer, uint64_t usage = kRead) {
        void* data = nullptr;
        const Outcome outcome = mBuffers.lock(buffer, usage, kWhole, -1, &data);
        EXPECT_TRUE(outcome.ok()) << outcome.reason;
        return static_cast<uint8_t*>(data);
    }

    BufferError lockError(const void* buffer, uint64_t usage, const Region& region) {
        void* data = nullptr;
        const BufferError error = mBuffers.lock(buffer, usage, region, -1, &data).error;
        EXPECT_EQ(error == BufferError::kNone, data != nullptr);
        return error;
    }

    ImportedBuffers mBuffers;
};

TEST_F(ImportedBuffersTest, OneHandleIsImportedSeveralTimesWithOneContent) {
    UniqueHandle raw = createNv12();
    const native_handle_t* first = import(raw.get());
    const native_handle_t* second = import(raw.get());
    EXPECT_NE(first, raw.get());
    EXPECT_NE(first, second);
    raw.reset();
    lock(first, kWrite)[491'519] = 0x5a;
    EXPECT_TRUE(mBuffers.release(first).ok());
    EXPECT_EQ(lock(second)[491'519], 0x5a);
    EXPECT_TRUE(mBuffers.release(second).ok());
}

TEST_F(ImportedBuffersTest, ReleaseGivesEverythingBack) {
    const UniqueHandle raw = createNv12();
    const int descriptors = openDescriptors();
    const int mappings = bufferMappings();
    for (int i = 0; i < 10; ++i) {
        const native_handle_t* handle = import(raw.get());
        EXPECT_EQ(openDescriptors(), descriptors + 1);
        lock(handle);
        lock(handle);
        EXPECT_EQ(bufferMappings(), mappings + 1);
        EXPECT_TRUE(mBuffers.release(handle).ok());
        EXPECT_EQ(bufferMappings(), mappings);
    }
    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_TRUE(mBuffers.all().empty());
}

TEST_F(ImportedBuffersTest, UnknownPointersAreRefused) {
    const UniqueHandle raw = createNv12();
    const native_handle_t* released = import(raw.get());
    ASSERT_TRUE(mBuffers.release(released).ok());
    BufferInfo info;
    for (const void* pointer :
         {static_cast<const void*>(nullptr), static_cast<const void*>(raw.get()),
          static_cast<const void*>(released), reinterpret_cast<const void*>(uintptr_t{1})}) {
        EXPECT_EQ(mBuffers.release(pointer).error, BufferError::kBadBuffer);
        EXPECT_EQ(lockError(pointer, kRead, kWhole), BufferError::kBadBuffer);
        EXPECT_EQ(mBuffers.unlock(pointer).error, BufferError::kBadBuffer);
        EXPECT_EQ(mBuffers.requireLocked(pointer).error, BufferError::kBadBuffer);
        EXPECT_EQ(mBuffers.describe(pointer, &info).error, BufferError::kBadBuffer);
    }
}

TEST_F(ImportedBuffersTest, LocksNestAtOneAddress) {
    const UniqueHandle raw = createNv12();
    const native_handle_t* handle = import(raw.get());
    EXPECT_EQ(mBuffers.requireLocked(handle).error, BufferError::kBadBuffer);
    uint8_t* const address = lock(handle);
    EXPECT_EQ(lock(handle, kWrite), address);
    EXPECT_TRUE(mBuffers.unlock(handle).ok());
    EXPECT_TRUE(mBuffers.requireLocked(handle).ok());
    EXPECT_TRUE(mBuffers.unlock(handle).ok());
    EXPECT_EQ(mBuffers.unlock(handle).error, BufferError::kBadBuffer);
    EXPECT_EQ(lock(handle), address) << "the mapping stays until the buffer is freed";
    EXPECT_TRUE(mBuffers.release(handle).ok());
}

TEST_F(ImportedBuffersTest, LockChecksUsageAndRegion) {
    const UniqueHandle raw = createNv12();
    const native_handle_t* handle = import(raw.get());
    EXPECT_EQ(lockError(handle, 0, kWhole), BufferError::kBadValue);
    EXPECT_EQ(lockError(handle, 1 << 17, kWhole), BufferError::kBadValue);
    EXPECT_EQ(lockError(handle, kRead | 1 << 8, kWhole), BufferError::kBadValue);
    for (const Region& region :
         {Region{0, 0, 641, 480}, Region{0, 0, 640, 481}, Region{-1, 0, 640, 480},
          Region{0, -1, 640, 480}, Region{10, 10, 10, 20}, Region{10, 10, 20, 9},
          Region{0, 0, 640, 0}, Region{640, 480, 641, 481}, Region{0, 0, int64_t{1} << 32, 480}}) {
        EXPECT_EQ(lockError(handle, kRead, region), BufferError::kBadValue);
    }
    EXPECT_EQ(mBuffers.unlock(handle).error, BufferError::kBadBuffer) << "a refused lock locked";
    EXPECT_EQ(lockError(handle, kRead, {0, 0, 640, 480}), BufferError::kNone);
    EXPECT_EQ(lockError(handle, kRead, {639, 479, 640, 480}), BufferError::kNone);
    EXPECT_TRUE(mBuffers.release(handle).ok());
}

TEST_F(ImportedBuffersTest, LockWaitsForItsFence) {
    const UniqueHandle raw = createNv12();
    const native_handle_t* handle = import(raw.get());
    const int fence = eventfd(0, EFD_CLOEXEC);
    void* data = nullptr;
    std::thread signaller([&] { eventfd_write(fence, 1); });
    EXPECT_TRUE(mBuffers.lock(handle, kRead, kWhole, fence, &data).ok());
    signaller.join();
    EXPECT_NE(data, nullptr);
    close(fence);
    EXPECT_EQ(mBuffers.lock(handle, kRead, kWhole, 1 << 20, &data).error, BufferError::kBadValue);
    EXPECT_TRUE(mBuffers.release(handle).ok());
}

TEST_F(ImportedBuffersTest, TailAfterTheBufferIsZeroAndLargeEnough) {
    for (const uint32_t bytes : {1u, 4096u, 4097u, 24'000'000u}) {
        const UniqueHandle raw = create(describe(kFormatBlob, bytes, 1));
        const native_handle_t* handle = import(raw.get());
        uint8_t* const data = lock(handle);
        std::memset(data, 0xff, bytes);
        const uint8_t* const end = data + 2 * size_t{bytes};
        EXPECT_EQ(std::find_if(data + bytes, const_cast<uint8_t*>(end),
                               [](uint8_t byte) { return byte != 0; }),
                  end)
                << bytes;
        EXPECT_TRUE(mBuffers.release(handle).ok());
    }
}

TEST_F(ImportedBuffersTest, TailCannotBeWritten) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const UniqueHandle raw = create(describe(kFormatBlob, 4096, 1));
    const native_handle_t* handle = import(raw.get());
    uint8_t* const data = lock(handle);
    data[4095] = 1;
    EXPECT_DEATH(const_cast<volatile uint8_t*>(data)[4096] = 1, "");
    EXPECT_TRUE(mBuffers.release(handle).ok());
}

TEST_F(ImportedBuffersTest, ThreadsUseOneRegistry) {
    const UniqueHandle raw = create(describe(kFormatBlob, 4096, 1));
    const native_handle_t* shared = import(raw.get());
    const int descriptors = openDescriptors();
    std::vector<std::thread> threads;
    for (uint32_t t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 50; ++i) {
                const native_handle_t* own = import(raw.get());
                lock(own)[t] = static_cast<uint8_t>(i);
                lock(shared);
                EXPECT_TRUE(mBuffers.unlock(shared).ok());
                mBuffers.all();
                EXPECT_TRUE(mBuffers.release(own).ok());
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_EQ(mBuffers.unlock(shared).error, BufferError::kBadBuffer) << "an unlock was lost";
    EXPECT_TRUE(mBuffers.release(shared).ok());
}

}  // namespace
}  // namespace graphics
