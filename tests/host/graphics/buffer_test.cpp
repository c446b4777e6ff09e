// Layouts of buffers without gaps; what a new buffer is; false handles are refused.
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
    const int before = CountOpenDescriptors();
    const auto copy = DuplicateBuffer(raw);
    EXPECT_EQ(CountOpenDescriptors() - before, copy.Ok() ? 1 : 0);
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
    UniqueHandle raw = Create(Describe(kFormatBlob, 5000, 1));
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
}

TEST(BufferHandle, FalseHandlesAreRefused) {
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

BufferLayout LayoutOf(int32_t format, uint32_t width, uint32_t height) {
    return LayOut(Describe(format, width, height)).Value();
}

TEST(BufferLayout, PlanesFillTheBufferAtEverySize) {
    for (const int32_t format : {kFormatRaw10, kFormatYcbcr420}) {
        for (const uint32_t width : {4u, 52u, 4000u, kMaxSide}) {
            for (const uint32_t height : {1u, 128u, 129u, kMaxSide}) {
                const BufferLayout layout = LayoutOf(format, width, height);
                uint64_t end = 0;
                for (const Plane& plane : layout.planes) {
                    EXPECT_EQ(plane.offset, end);
                    EXPECT_EQ(plane.size, uint64_t{plane.stride} * plane.scanlines);
                    EXPECT_GE(plane.stride, (plane.width * plane.sampleIncrementInBits + 7) / 8);
                    EXPECT_GE(plane.scanlines, plane.height);
                    end += plane.size;
                }
                EXPECT_EQ(layout.size, end);
            }
        }
    }
    EXPECT_EQ(LayoutOf(kFormatRaw10, 48, 1).stride, 64u);   // 60 bytes
    EXPECT_EQ(LayoutOf(kFormatRaw10, 52, 1).stride, 128u);  // 65 bytes
    // An odd picture keeps the chroma of its last column and row.
    const Plane chroma = LayoutOf(kFormatYcbcr420, 641, 481).planes.at(1);
    EXPECT_EQ(chroma.width, 321u);
    EXPECT_EQ(chroma.height, 241u);
}

TEST(BufferLayout, RefusesContradictionsAndWhatIsNotSupported) {
    const auto errorWith = [](auto change) {
        BufferDescription description = Describe(kFormatRaw10, 640, 480);
        change(description);
        return ErrorOf(LayOut(description));
    };
    EXPECT_EQ(errorWith([](auto& d) { d.width = 0; }), BufferError::kBadValue);
    EXPECT_EQ(errorWith([](auto& d) { d.name = std::string(128, 'n'); }), BufferError::kBadValue);
    const BufferError unsupported = BufferError::kUnsupported;
    EXPECT_EQ(errorWith([](auto& d) { d.format = 0x26; }), unsupported);    // RAW12
    EXPECT_EQ(errorWith([](auto& d) { d.usage = 1 << 14; }), unsupported);  // protected
    EXPECT_EQ(errorWith([](auto& d) { d.layerCount = 2; }), unsupported);
    EXPECT_EQ(errorWith([](auto& d) { d.reservedSize = 1; }), unsupported);
    EXPECT_EQ(errorWith([](auto& d) { d.width = 639; }), unsupported);
    EXPECT_EQ(errorWith([](auto& d) { d.height = kMaxSide + 1; }), unsupported);
    EXPECT_TRUE(LayOut(Describe(kFormatBlob, kMaxBlobBytes, 1)).Ok());
    EXPECT_FALSE(LayOut(Describe(kFormatBlob, kMaxBlobBytes + 1, 1)).Ok());
    EXPECT_FALSE(LayOut(Describe(kFormatBlob, 100, 2)).Ok());
}

}  // namespace
}  // namespace graphics
