// Imported buffers: independence, leaks, locks, fences, the zero tail, and use from threads.
#include <graphics_core/fence.h>
#include <graphics_core/imported_buffers.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/time.h>
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
    const native_handle_t* import(const UniqueHandle& raw) {
        const native_handle_t* handle = nullptr;
        const Outcome outcome = mBuffers.import(raw.get(), &handle);
        EXPECT_TRUE(outcome.ok()) << outcome.reason;
        return handle;
    }

    uint8_t* lock(const void* buffer) {
        void* data = nullptr;
        const Outcome outcome = mBuffers.lock(buffer, kRead, {}, -1, &data);
        EXPECT_TRUE(outcome.ok()) << outcome.reason;
        return static_cast<uint8_t*>(data);
    }

    BufferError lockError(const void* buffer, uint64_t usage, const Region& region, int fence) {
        void* data = nullptr;
        const BufferError error = mBuffers.lock(buffer, usage, region, fence, &data).error;
        EXPECT_EQ(error == BufferError::kNone, data != nullptr);
        return error;
    }

    ImportedBuffers mBuffers;
};

TEST_F(ImportedBuffersTest, ReleaseGivesEverythingBack) {
    const UniqueHandle raw = createNv12();
    const int descriptors = countOpenDescriptors();
    for (int i = 0; i < 10; ++i) {
        const native_handle_t* handle = import(raw);
        lock(handle);
        lock(handle);
        EXPECT_EQ(countOpenDescriptors(), descriptors + 1);
        EXPECT_EQ(bufferMappings(), 1);
        EXPECT_TRUE(mBuffers.release(handle).ok());
        EXPECT_EQ(mBuffers.release(handle).error, BufferError::kBadBuffer);
    }
    EXPECT_EQ(countOpenDescriptors(), descriptors);
    EXPECT_EQ(bufferMappings(), 0);
}

TEST_F(ImportedBuffersTest, LocksNestAtOneAddress) {
    UniqueHandle raw = createNv12();
    const native_handle_t* handle = import(raw);
    const native_handle_t* second = import(raw);
    raw.reset();
    lock(second)[491'519] = 0x5a;
    EXPECT_TRUE(mBuffers.release(second).ok());
    uint8_t* const address = lock(handle);
    EXPECT_EQ(lock(handle), address);
    EXPECT_TRUE(mBuffers.unlock(handle).ok());
    EXPECT_TRUE(mBuffers.unlock(handle).ok());
    EXPECT_EQ(mBuffers.unlock(handle).error, BufferError::kBadBuffer);
    EXPECT_EQ(address[491'519], 0x5a) << "every import has the same content";
    EXPECT_EQ(lock(handle), address) << "the mapping stays until the buffer is released";
}

TEST_F(ImportedBuffersTest, LockChecksItsArguments) {
    const UniqueHandle raw = createNv12();
    const native_handle_t* handle = import(raw);
    EXPECT_EQ(lockError(raw.get(), kRead, {}, -1), BufferError::kBadBuffer);
    EXPECT_EQ(lockError(handle, 0, {}, -1), BufferError::kBadValue);
    EXPECT_EQ(lockError(handle, kRead | 1 << 17, {}, -1), BufferError::kBadValue);
    for (const Region& region : {Region{0, 0, 641, 480}, Region{-1, 0, 640, 480},
                                 Region{10, 10, 10, 20}, Region{0, 0, int64_t{1} << 32, 480}}) {
        EXPECT_EQ(lockError(handle, kRead, region, -1), BufferError::kBadValue);
    }
    EXPECT_EQ(mBuffers.unlock(handle).error, BufferError::kBadBuffer) << "a refused lock locked";
    EXPECT_EQ(lockError(handle, kRead, {639, 479, 640, 480}, -1), BufferError::kNone);
}

TEST_F(ImportedBuffersTest, LockWaitsForItsFenceButNotForever) {
    const UniqueHandle raw = createNv12();
    const native_handle_t* handle = import(raw);
    const int fence = eventfd(0, EFD_CLOEXEC);
    EXPECT_EQ(waitForFence(fence, 1).error, BufferError::kNoResources);
    std::thread signaller([&] { eventfd_write(fence, 1); });
    EXPECT_EQ(lockError(handle, kRead, {}, fence), BufferError::kNone);
    signaller.join();
    close(fence);

    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[1]);  // can never signal
    EXPECT_EQ(lockError(handle, kRead, {}, ends[0]), BufferError::kBadValue);
    close(ends[0]);
}

TEST(Fence, SignalsDoNotProlongTheWait) {
    struct sigaction ignore = {};
    ignore.sa_handler = [](int) {};
    ASSERT_EQ(sigaction(SIGALRM, &ignore, nullptr), 0);
    const itimerval often = {{0, 1000}, {0, 1000}};
    const int fence = eventfd(0, EFD_CLOEXEC);
    ASSERT_EQ(setitimer(ITIMER_REAL, &often, nullptr), 0);
    EXPECT_EQ(waitForFence(fence, 100).error, BufferError::kNoResources);
    const itimerval never = {};
    EXPECT_EQ(setitimer(ITIMER_REAL, &never, nullptr), 0);
    close(fence);
}

TEST_F(ImportedBuffersTest, TailAfterTheBufferIsZeroAndLargeEnough) {
    for (const uint32_t bytes : {1u, 4096u, 4097u, 24'000'000u}) {
        const UniqueHandle raw = create(describe(kFormatBlob, bytes, 1));
        uint8_t* const data = lock(import(raw));
        std::memset(data, 0xff, bytes);
        EXPECT_EQ(std::count(data + bytes, data + 2 * size_t{bytes}, 0), bytes);
    }
}

TEST_F(ImportedBuffersTest, TailCannotBeWritten) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const UniqueHandle raw = create(describe(kFormatBlob, 4096, 1));
    volatile uint8_t* const data = lock(import(raw));
    data[4095] = 1;
    EXPECT_DEATH(data[4096] = 1, "");
}

TEST_F(ImportedBuffersTest, ThreadsUseOneRegistry) {
    const UniqueHandle raw = create(describe(kFormatBlob, 4096, 1));
    const native_handle_t* shared = import(raw);
    const int descriptors = countOpenDescriptors();
    std::vector<std::thread> threads;
    for (uint32_t t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 50; ++i) {
                const native_handle_t* own = import(raw);
                lock(own)[t] = static_cast<uint8_t>(i);
                lock(shared);
                EXPECT_TRUE(mBuffers.unlock(shared).ok());
                mBuffers.all();
                EXPECT_TRUE(mBuffers.release(own).ok());
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(countOpenDescriptors(), descriptors);
    EXPECT_EQ(mBuffers.unlock(shared).error, BufferError::kBadBuffer) << "an unlock was lost";
}

}  // namespace
}  // namespace graphics
