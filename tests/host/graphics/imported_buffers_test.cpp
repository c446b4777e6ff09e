// Imported buffers: leaks, locks, fences and the zero tail.
#include <fcntl.h>
#include <graphics/buffer_mapping.h>
#include <graphics/fence.h>
#include <graphics/imported_buffers.h>
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

class ImportedBuffersTest : public testing::Test {
  protected:
    const native_handle_t* Import(const UniqueHandle& raw) {
        return m_buffers.Import(raw.get()).Value();
    }
    uint8_t* Lock(const void* buffer) {
        return static_cast<uint8_t*>(m_buffers.Lock(buffer, kRead, {}, -1).Value());
    }
    BufferError LockError(const void* buffer, uint64_t usage, const Region& region, int fence) {
        return ErrorOf(m_buffers.Lock(buffer, usage, region, fence));
    }

    ImportedBuffers m_buffers;
};

TEST_F(ImportedBuffersTest, LocksNestAtOneAddressUntilRelease) {
    UniqueHandle raw = CreateNv12();
    const native_handle_t* handle = Import(raw);
    const native_handle_t* second = Import(raw);
    raw.reset();
    const int descriptors = CountOpenDescriptors();
    Lock(second)[491'519] = 0x5a;
    EXPECT_TRUE(m_buffers.Release(second).Ok());
    EXPECT_EQ(ErrorOf(m_buffers.Release(second)), BufferError::kBadBuffer);
    uint8_t* const address = Lock(handle);
    EXPECT_EQ(address[491'519], 0x5a) << "every import has the same content";
    EXPECT_EQ(Lock(handle), address);
    EXPECT_EQ(BufferMappings(), 1);
    EXPECT_TRUE(m_buffers.Unlock(handle).Ok());
    EXPECT_TRUE(m_buffers.RequireLocked(handle).Ok());
    EXPECT_TRUE(m_buffers.Unlock(handle).Ok());
    EXPECT_EQ(ErrorOf(m_buffers.RequireLocked(handle)), BufferError::kBadBuffer);
    EXPECT_TRUE(m_buffers.Release(handle).Ok());
    EXPECT_EQ(BufferMappings(), 0);
    EXPECT_EQ(CountOpenDescriptors(), descriptors - 2);
}

TEST_F(ImportedBuffersTest, LockChecksItsArguments) {
    const UniqueHandle raw = CreateNv12();
    const native_handle_t* handle = Import(raw);
    EXPECT_EQ(LockError(raw.get(), kRead, {}, -1), BufferError::kBadBuffer);
    EXPECT_EQ(LockError(handle, 0, {}, -1), BufferError::kBadValue);
    EXPECT_EQ(LockError(handle, kRead | 1 << 17, {}, -1), BufferError::kBadValue);
    for (const Region& region :
         {Region{0, 0, 641, 480}, Region{0, 1, 640, 480}, Region{-1, 0, 1, 1}, Region{5, 5, 0, 0},
          Region{INT32_MAX, 0, INT32_MAX, 1}}) {
        EXPECT_EQ(LockError(handle, kRead, region, -1), BufferError::kBadValue);
    }
    EXPECT_EQ(ErrorOf(m_buffers.Unlock(handle)), BufferError::kBadBuffer) << "was not locked";
    EXPECT_EQ(LockError(handle, kRead, {639, 479, 1, 1}, -1), BufferError::kNone);
}

TEST_F(ImportedBuffersTest, LockWaitsForItsFenceButNotForever) {
    const UniqueHandle raw = CreateNv12();
    const native_handle_t* handle = Import(raw);
    const int fence = eventfd(0, EFD_CLOEXEC);
    EXPECT_EQ(ErrorOf(WaitForFence(fence, 1)), BufferError::kNoResources);
    std::thread signaller([&] { eventfd_write(fence, 1); });
    EXPECT_EQ(LockError(handle, kRead, {}, fence), BufferError::kNone);
    signaller.join();
    close(fence);

    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[1]);  // can never signal
    EXPECT_EQ(LockError(handle, kRead, {}, ends[0]), BufferError::kBadValue);
    close(ends[0]);
}

TEST_F(ImportedBuffersTest, TailAfterTheBufferIsLargeEnoughZeroAndReadOnly) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    for (const uint32_t bytes : {1u, 4096u, 4097u, 24'000'000u}) {
        const UniqueHandle raw = Create(Describe(kFormatBlob, bytes, 1));
        uint8_t* const data = Lock(Import(raw));
        std::memset(data, 0xff, bytes);
        EXPECT_EQ(std::count(data + bytes, data + 2 * size_t{bytes}, 0), bytes);
        if (bytes % 4096 == 0) EXPECT_DEATH(*const_cast<volatile uint8_t*>(data + bytes) = 1, "");
    }
}

}  // namespace
}  // namespace graphics
