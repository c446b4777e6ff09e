// Handles: what a new buffer is, and that no lie in a handle gets through.
#include <fcntl.h>
#include <graphics_core/buffer_handle.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

#include "buffers.h"

namespace graphics {
namespace {

HandleIntegers integersOf(const UniqueHandle& handle) {
    HandleIntegers integers = {};
    EXPECT_TRUE(readIntegers(handle.get(), &integers));
    return integers;
}

bool refused(const native_handle_t* raw) {
    UniqueHandle handle;
    BufferInfo info;
    const int before = countOpenDescriptors();
    const Outcome outcome = duplicateBuffer(raw, &handle, &info);
    EXPECT_EQ(countOpenDescriptors() - before, outcome.ok() ? 1 : 0);
    EXPECT_EQ(outcome.ok(), outcome.reason.empty());
    return outcome.error == BufferError::kBadBuffer;
}

// Whether an otherwise good handle (of 491,520 bytes unless given) is refused with `fd` (taken
// over) in place of its descriptor. It says `fd`'s own inode, so that only the descriptor itself
// can be at fault.
bool refusedWith(int fd, const UniqueHandle& handle = createNv12()) {
    close(handle->data[0]);
    handle->data[0] = fd;
    struct stat status = {};
    EXPECT_EQ(fstat(fd, &status), 0);
    HandleIntegers integers = integersOf(handle);
    integers.id = status.st_ino;
    writeIntegers(integers, handle.get());
    return refused(handle.get());
}

int memoryFile(off_t size, int seals) {
    const int fd = memfd_create("test", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    EXPECT_EQ(ftruncate(fd, size), 0);
    EXPECT_EQ(fcntl(fd, F_ADD_SEALS, seals), 0);
    return fd;
}

TEST(BufferHandle, FileOfHugePagesIsRefused) {
    constexpr off_t kSize = 2 * 1024 * 1024;
    const int fd = memfd_create("test", MFD_CLOEXEC | MFD_ALLOW_SEALING | MFD_HUGETLB);
    if (fd < 0 || ftruncate(fd, kSize) != 0) GTEST_SKIP() << "no huge pages of 2 MiB here";
    EXPECT_EQ(fcntl(fd, F_ADD_SEALS, F_SEAL_SHRINK), 0);
    EXPECT_TRUE(refusedWith(fd, create(describe(kFormatBlob, kSize, 1))));
}

TEST(BufferHandle, NewBufferIsSealedAndCloseOnExec) {
    const UniqueHandle handle = createNv12();
    const int fd = handle->data[0];
    EXPECT_EQ(fcntl(fd, F_GETFD), FD_CLOEXEC);
    EXPECT_NE(ftruncate(fd, 1), 0);
    EXPECT_NE(ftruncate(fd, 1 << 20), 0);
    EXPECT_NE(fcntl(fd, F_ADD_SEALS, F_SEAL_WRITE), 0) << "nobody may take writing away";
    EXPECT_NE(integersOf(handle).id, integersOf(createNv12()).id);
}

TEST(BufferHandle, DuplicateIsIndependentOfItsOrigin) {
    BufferDescription description = describe(kFormatBlob, 5000, 1);
    description.name = std::string(kMaxNameBytes, 'n');
    UniqueHandle raw = create(description);
    UniqueHandle copy;
    BufferInfo info;
    ASSERT_TRUE(duplicateBuffer(raw.get(), &copy, &info).ok());
    ASSERT_EQ(pwrite(raw->data[0], "here", 4, 100), 4);
    raw.reset();
    char bytes[4] = {};
    EXPECT_EQ(pread(copy->data[0], bytes, 4, 100), 4);
    EXPECT_EQ(std::memcmp(bytes, "here", 4), 0);
    EXPECT_EQ(fcntl(copy->data[0], F_GETFD), FD_CLOEXEC);
    EXPECT_EQ(info.description.name, description.name);
    EXPECT_EQ(info.layout.size, 5000u);
    EXPECT_FALSE(refused(copy.get()));
}

TEST(BufferHandle, EveryIntegerIsChecked) {
    const UniqueHandle handle = createNv12();
    for (int i = 0; i < handle->numInts; ++i) {
        int& integer = handle->data[handle->numFds + i];
        const int good = integer;
        integer = static_cast<int>(static_cast<uint32_t>(good) ^ 0x80000000u);
        EXPECT_TRUE(refused(handle.get())) << "integer " << i;
        integer = good;
    }
    EXPECT_FALSE(refused(handle.get()));
}

TEST(BufferHandle, SmallLiesAreFound) {
    const UniqueHandle handle = createNv12();
    const HandleIntegers good = integersOf(handle);
    const auto refusedAfter = [&](auto change) {
        HandleIntegers integers = good;
        change(integers);
        writeIntegers(integers, handle.get());
        return refused(handle.get());
    };
    EXPECT_TRUE(refusedAfter([](auto& i) { i.width += 128; }));
    EXPECT_TRUE(refusedAfter([](auto& i) { i.format = kFormatRaw10; }));
    EXPECT_TRUE(refusedAfter([](auto& i) { i.stride += 1; }));
    EXPECT_TRUE(refusedAfter([](auto& i) { i.size += 1; }));
    EXPECT_TRUE(refusedAfter([](auto& i) { i.id += 1; }));
    EXPECT_TRUE(refusedAfter([](auto& i) { std::memset(i.name, 'n', sizeof(i.name)); }));
    // A larger buffer, consistent in itself: the memory file is what gives it away.
    EXPECT_TRUE(refusedAfter([](auto& i) {
        i.height = 640;
        i.size = 640 * 640 * 3 / 2;
    }));
}

TEST(BufferHandle, OtherShapesAreRefused) {
    EXPECT_TRUE(refused(nullptr));
    const UniqueHandle handle = createNv12();
    for (int native_handle_t::*field :
         {&native_handle_t::version, &native_handle_t::numFds, &native_handle_t::numInts}) {
        const int good = handle.get()->*field;
        for (const int bad : {good - 1, good + 1, -1, 0x7fffffff}) {
            handle.get()->*field = bad;
            EXPECT_TRUE(refused(handle.get())) << bad;
        }
        handle.get()->*field = good;
    }
}

TEST(BufferHandle, OtherDescriptorsAreRefused) {
    EXPECT_FALSE(refusedWith(memoryFile(491'520, F_SEAL_SHRINK)));
    EXPECT_TRUE(refusedWith(memoryFile(491'520, F_SEAL_GROW))) << "not sealed against shrinking";
    for (const int seal : {F_SEAL_WRITE, F_SEAL_FUTURE_WRITE}) {
        EXPECT_TRUE(refusedWith(memoryFile(491'520, F_SEAL_SHRINK | seal))) << "never writable";
    }
    EXPECT_TRUE(refusedWith(memoryFile(491'519, F_SEAL_SHRINK))) << "too short";
    EXPECT_TRUE(refusedWith(memoryFile(491'521, F_SEAL_SHRINK))) << "too long";

    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    EXPECT_TRUE(refusedWith(ends[0]));
    close(ends[1]);
    EXPECT_TRUE(refusedWith(open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC)));
    EXPECT_TRUE(refusedWith(open("/proc/self/exe", O_RDONLY | O_CLOEXEC)));

    const int writable = memoryFile(491'520, F_SEAL_SHRINK);
    const std::string path = "/proc/self/fd/" + std::to_string(writable);
    EXPECT_TRUE(refusedWith(open(path.c_str(), O_RDONLY | O_CLOEXEC))) << "read-only";
    close(writable);

    const UniqueHandle closed = createNv12();
    close(closed->data[0]);
    closed->data[0] = -1;
    EXPECT_TRUE(refused(closed.get()));
}

}  // namespace
}  // namespace graphics
