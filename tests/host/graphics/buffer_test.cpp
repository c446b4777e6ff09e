// Handles: what a new buffer is, and that a handle that lies is refused.
#include <fcntl.h>
#include <graphics/buffer_handle.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

#include "buffers.h"

namespace graphics {
namespace {

bool Refused(const native_handle_t* raw) {
    const int before = countOpenDescriptors();
    const auto copy = DuplicateBuffer(raw);
    EXPECT_EQ(countOpenDescriptors() - before, copy.Ok() ? 1 : 0);
    return ErrorOf(copy) == BufferError::kBadBuffer;
}

// Whether a good handle is refused after a change of its integers.
template <typename Change>
bool RefusedAfter(const UniqueHandle& handle, Change change) {
    HandleIntegers integers = {};
    EXPECT_TRUE(ReadIntegers(handle.get(), &integers));
    const HandleIntegers good = integers;
    change(integers);
    WriteIntegers(integers, handle.get());
    const bool refused = Refused(handle.get());
    WriteIntegers(good, handle.get());
    return refused;
}

// Whether a good handle is refused with a memfd like this, whose id it tells.
bool RefusedWithMemfd(off_t size, int seals) {
    const UniqueHandle handle = CreateNv12();
    close(handle->data[0]);
    handle->data[0] = memfd_create("test", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    EXPECT_EQ(ftruncate(handle->data[0], size), 0);
    EXPECT_EQ(fcntl(handle->data[0], F_ADD_SEALS, seals), 0);
    struct stat status = {};
    EXPECT_EQ(fstat(handle->data[0], &status), 0);
    return RefusedAfter(handle, [&](auto& i) { i.id = status.st_ino; });
}

TEST(BufferHandle, DuplicateIsIndependentOfItsSealedOrigin) {
    BufferDescription description = Describe(kFormatBlob, 5000, 1);
    description.name = std::string(kMaxNameBytes, 'n');
    UniqueHandle raw = Create(description);
    EXPECT_EQ(fcntl(raw->data[0], F_GETFD), FD_CLOEXEC);
    EXPECT_NE(ftruncate(raw->data[0], 1), 0);
    EXPECT_NE(ftruncate(raw->data[0], 1 << 20), 0);
    const auto made = DuplicateBuffer(raw.get());
    ASSERT_EQ(pwrite(raw->data[0], "here", 4, 100), 4);
    raw.reset();
    const int fd = made.Value().handle->data[0];
    char bytes[4] = {};
    EXPECT_EQ(pread(fd, bytes, 4, 100), 4);
    EXPECT_EQ(std::string(bytes, 4), "here");
    EXPECT_EQ(fcntl(fd, F_GETFD), FD_CLOEXEC);
    EXPECT_EQ(made.Value().info.description.name, description.name);
}

TEST(BufferHandle, HandlesThatLieAreRefused) {
    const UniqueHandle handle = CreateNv12();
    EXPECT_FALSE(RefusedAfter(handle, [](auto&) {}));
    EXPECT_TRUE(RefusedAfter(handle, [](auto& i) { i.magic += 1; }));
    EXPECT_TRUE(RefusedAfter(handle, [](auto& i) { i.width += 128; }));
    EXPECT_TRUE(RefusedAfter(handle, [](auto& i) { i.layerCount = 0; }));
    EXPECT_TRUE(RefusedAfter(handle, [](auto& i) { i.stride += 1; }));
    EXPECT_TRUE(RefusedAfter(handle, [](auto& i) { i.size += 1; }));
    EXPECT_TRUE(RefusedAfter(handle, [](auto& i) { i.id += 1; }));
    EXPECT_TRUE(RefusedAfter(handle, [](auto& i) { std::memset(i.name, 'n', sizeof(i.name)); }));

    EXPECT_FALSE(RefusedWithMemfd(491'520, F_SEAL_SHRINK));
    EXPECT_TRUE(RefusedWithMemfd(491'520, F_SEAL_GROW)) << "may shrink";
    EXPECT_TRUE(RefusedWithMemfd(491'519, F_SEAL_SHRINK)) << "too short";

    EXPECT_TRUE(Refused(nullptr));
    handle->numInts -= 1;
    EXPECT_TRUE(Refused(handle.get()));
    handle->numInts += 1;
    close(std::exchange(handle->data[0], -1));
    EXPECT_TRUE(Refused(handle.get()));
}

}  // namespace
}  // namespace graphics
