// Handles: what a new buffer is, and that no lie in a handle gets through.
#include <fcntl.h>
#include <graphics_core/BufferHandle.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <set>

#include "buffers.h"

namespace graphics {
namespace {

HandleIntegers integersOf(const UniqueHandle& handle) {
    HandleIntegers integers = {};
    EXPECT_TRUE(readIntegers(handle.get(), &integers));
    return integers;
}

BufferError duplicate(const native_handle_t* raw) {
    UniqueHandle handle;
    BufferInfo info;
    const int before = openDescriptors();
    const Outcome outcome = duplicateBuffer(raw, &handle, &info);
    EXPECT_EQ(outcome.ok(), handle != nullptr);
    EXPECT_EQ(outcome.ok(), outcome.reason.empty());
    EXPECT_EQ(openDescriptors() - before, outcome.ok() ? 1 : 0);
    return outcome.error;
}

// Puts `fd` (taken over) in the place of the handle's descriptor, with its inode as buffer id, so
// that only the descriptor itself can be what is refused.
void replaceDescriptor(const UniqueHandle& handle, int fd) {
    ASSERT_GE(fd, 0);
    close(handle->data[0]);
    handle->data[0] = fd;
    struct stat status = {};
    ASSERT_EQ(fstat(fd, &status), 0);
    HandleIntegers integers = integersOf(handle);
    integers.id = status.st_ino;
    ASSERT_TRUE(writeIntegers(integers, handle.get()));
}

int memoryFile(uint64_t size, int seals) {
    const int fd = memfd_create("test", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    EXPECT_EQ(ftruncate(fd, static_cast<off_t>(size)), 0);
    EXPECT_EQ(fcntl(fd, F_ADD_SEALS, seals), 0);
    return fd;
}

TEST(BufferHandle, NewBufferIsSealedZeroedAndCloseOnExec) {
    const UniqueHandle handle = createNv12();
    ASSERT_EQ(handle->numFds, 1);
    const int fd = handle->data[0];
    EXPECT_EQ(fcntl(fd, F_GETFD), FD_CLOEXEC);
    EXPECT_NE(ftruncate(fd, 1), 0);
    EXPECT_NE(ftruncate(fd, 1 << 20), 0);
    EXPECT_NE(fcntl(fd, F_ADD_SEALS, F_SEAL_WRITE), 0) << "nobody may take writing away";
    std::string content(491'520, 'x');
    EXPECT_EQ(pread(fd, content.data(), content.size(), 0), 491'520);
    EXPECT_EQ(content.find_first_not_of('\0'), std::string::npos);
}

TEST(BufferHandle, BuffersHaveDifferentIds) {
    std::set<uint64_t> ids;
    std::vector<UniqueHandle> handles;
    for (int i = 0; i < 20; ++i) {
        handles.push_back(createNv12());
        ids.insert(integersOf(handles.back()).id);
    }
    EXPECT_EQ(ids.size(), handles.size());
}

TEST(BufferHandle, DuplicateIsIndependentOfItsOrigin) {
    BufferDescription description = describe(kFormatBlob, 5000, 1);
    description.name = std::string(kMaxNameBytes, 'n');
    UniqueHandle raw = create(description);
    UniqueHandle copy;
    BufferInfo info;
    ASSERT_TRUE(duplicateBuffer(raw.get(), &copy, &info).ok());
    ASSERT_EQ(pwrite(raw->data[0], "here", 4, 100), 4);
    const uint64_t id = integersOf(raw).id;
    raw.reset();

    char bytes[4] = {};
    EXPECT_EQ(pread(copy->data[0], bytes, 4, 100), 4);
    EXPECT_EQ(std::memcmp(bytes, "here", 4), 0);
    EXPECT_EQ(fcntl(copy->data[0], F_GETFD), FD_CLOEXEC);
    EXPECT_EQ(info.id, id);
    EXPECT_EQ(info.description.name, description.name);
    EXPECT_EQ(info.description.width, 5000u);
    EXPECT_EQ(info.description.usage, 3u);
    EXPECT_EQ(info.layout.size, 5000u);
    EXPECT_EQ(duplicate(copy.get()), BufferError::kNone);
}

TEST(BufferHandle, EveryIntegerIsChecked) {
    const UniqueHandle handle = createNv12();
    for (int i = 0; i < handle->numInts; ++i) {
        int& integer = handle->data[handle->numFds + i];
        const int good = integer;
        integer = static_cast<int>(static_cast<uint32_t>(good) ^ 0x80000000u);
        EXPECT_EQ(duplicate(handle.get()), BufferError::kBadBuffer) << "integer " << i;
        integer = good;
    }
    EXPECT_EQ(duplicate(handle.get()), BufferError::kNone);
}

TEST(BufferHandle, SmallLiesAboutTheGeometryAreFound) {
    const UniqueHandle handle = createNv12();
    const HandleIntegers good = integersOf(handle);
    const auto refused = [&](auto change) {
        HandleIntegers integers = good;
        change(integers);
        writeIntegers(integers, handle.get());
        return duplicate(handle.get()) == BufferError::kBadBuffer;
    };
    EXPECT_TRUE(refused([](auto& i) { i.width += 128; }));
    EXPECT_TRUE(refused([](auto& i) { i.height += 128; }));
    EXPECT_TRUE(refused([](auto& i) { i.layerCount = 2; }));
    EXPECT_TRUE(refused([](auto& i) { i.format = kFormatRaw10; }));
    EXPECT_TRUE(refused([](auto& i) { i.stride += 1; }));
    EXPECT_TRUE(refused([](auto& i) { i.size += 1; }));
    EXPECT_TRUE(refused([](auto& i) { i.id += 1; }));
    EXPECT_TRUE(refused([](auto& i) { std::memset(i.name, 'n', sizeof(i.name)); }));
    // A larger buffer throughout, consistent in itself: the file is what gives it away.
    EXPECT_TRUE(refused([](auto& i) {
        i.height = 512 + 128;
        i.size = 640 * 640 * 3 / 2;
    }));
}

TEST(BufferHandle, OtherShapesAreRefused) {
    EXPECT_EQ(duplicate(nullptr), BufferError::kBadBuffer);
    const UniqueHandle handle = createNv12();
    for (int native_handle_t::*field :
         {&native_handle_t::version, &native_handle_t::numFds, &native_handle_t::numInts}) {
        const int good = handle.get()->*field;
        for (const int bad : {good - 1, good + 1, 0, -1, 0x7fffffff}) {
            handle.get()->*field = bad;
            EXPECT_EQ(duplicate(handle.get()), BufferError::kBadBuffer) << bad;
        }
        handle.get()->*field = good;
    }
}

TEST(BufferHandle, OtherDescriptorsAreRefused) {
    const auto refused = [](int fd) {
        const UniqueHandle handle = createNv12();
        replaceDescriptor(handle, fd);
        return duplicate(handle.get()) == BufferError::kBadBuffer;
    };
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    EXPECT_TRUE(refused(ends[0]));
    EXPECT_TRUE(refused(ends[1]));
    EXPECT_TRUE(refused(open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC)));
    EXPECT_TRUE(refused(open("/proc/self/exe", O_RDONLY | O_CLOEXEC)));

    EXPECT_TRUE(refused(memoryFile(491'520, F_SEAL_GROW))) << "not sealed against shrinking";
    EXPECT_TRUE(refused(memoryFile(491'519, F_SEAL_SHRINK))) << "too short";
    EXPECT_TRUE(refused(memoryFile(491'521, F_SEAL_SHRINK))) << "too long";
    EXPECT_TRUE(refused(memoryFile(0, F_SEAL_SHRINK))) << "empty";
    // Without one of these faults, the same replacement is taken.
    EXPECT_FALSE(refused(memoryFile(491'520, F_SEAL_SHRINK)));

    const int writable = memoryFile(491'520, F_SEAL_SHRINK);
    const std::string path = "/proc/self/fd/" + std::to_string(writable);
    EXPECT_TRUE(refused(open(path.c_str(), O_RDONLY | O_CLOEXEC))) << "read-only";
    close(writable);

    const UniqueHandle closed = createNv12();
    close(closed->data[0]);
    closed->data[0] = -1;
    EXPECT_EQ(duplicate(closed.get()), BufferError::kBadBuffer);
}

}  // namespace
}  // namespace graphics
