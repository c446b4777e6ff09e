// Buffer operations: what goes to the allocator and the mapper, and every failure's line.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

#include "gralloc/offlinecameragrallocwrapper.h"
#include "tests/host/libhidlbase/open_descriptors.h"
#include "tests/support/log_capture.h"
#include "tests/support/memory_mapper.h"

std::atomic<int> descriptorsClosedTwice{0};

// In place of the C library's: nothing else tells of a second close, which may hit another file.
extern "C" int close(int fd) {
    const auto status = static_cast<int>(syscall(SYS_close, fd));
    if (status != 0 && errno == EBADF) ++descriptorsClosedTwice;
    return status;
}

using namespace ::vendor::zel::hardware::camera::offlinecamera::implementation;
using ::aidl::android::hardware::graphics::common::BufferUsage;
using ::aidl::android::hardware::graphics::common::PixelFormat;
using ::android::hardware::hidl_handle;
using ::android::hardware::hidl_vec;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace test {
namespace {

class GrallocWrapper : public ::testing::Test {
  public:
    native_handle* Allocate() {
        return wrapper.allocate(4096, 3072, PixelFormat::RAW10, BufferUsage::CPU_READ_OFTEN,
                                &stride);
    }

    LogCapture log;
    Calls calls;
    ::android::sp<MemoryMapper> mapper = new MemoryMapper(&calls);
    std::shared_ptr<FakeAllocator> allocator = ::ndk::SharedRefBase::make<FakeAllocator>(&calls);
    OfflineCameraGralloc wrapper{allocator, mapper};
    int32_t stride = -5;
    const ::android::hardware::graphics::mapper::V4_0::IMapper::MetadataType type{"some type", 10};
};

TEST_F(GrallocWrapper, AllocatesAndImportsOneBuffer) {
    const int descriptors = CountOpenDescriptors();
    allocator->stride = 5120;
    native_handle* const buffer = Allocate();
    EXPECT_THAT(calls, ElementsAre("createDescriptor '' 4096x3072 layers 1 format 37 usage 3 "
                                   "reserved 0",
                                   "allocate '' 4096x3072 layers 1 format 37 usage 3 reserved 0 x1",
                                   "importBuffer"));
    EXPECT_EQ(stride, 5120);
    ASSERT_NE(mapper->Memory(buffer), nullptr);
    // The raw handle's descriptors are gone, the imported one has its own and the same integers.
    ASSERT_EQ(buffer->numFds, 1);
    EXPECT_NE(buffer->data[0], allocator->lastDescriptor);
    EXPECT_FALSE(IsOpen(allocator->lastDescriptor));
    EXPECT_EQ(buffer->data[2], 11);

    calls.clear();
    EXPECT_EQ(wrapper.lock(buffer, BufferUsage::CPU_READ_RARELY), mapper->Memory(buffer));
    wrapper.unlock(buffer);
    hidl_vec<uint8_t> out;
    wrapper.get(buffer, type, &out);
    EXPECT_EQ(out.size(), 77u);
    mapper->metadata.emplace();
    wrapper.get(buffer, type, &out);
    EXPECT_EQ(out.size(), 0u);
    wrapper.freeBuffer(buffer);
    EXPECT_EQ(mapper->Memory(buffer), nullptr);
    EXPECT_EQ(CountOpenDescriptors(), descriptors);
    EXPECT_EQ(descriptorsClosedTwice, 0);
    EXPECT_THAT(calls, ElementsAre("lock 2", "unlock", "get some type 10", "get some type 10",
                                   "freeBuffer"));
    EXPECT_THAT(log.Take(), IsEmpty());
}

TEST_F(GrallocWrapper, AllocatesWithAnEmptyDescriptorAfterItsFailure) {
    mapper->errors["createDescriptor"] = fake::Error::BAD_VALUE;
    EXPECT_NE(Allocate(), nullptr);
    EXPECT_EQ(calls.at(1), "allocate x1");
    EXPECT_THAT(log.Take(), ElementsAre("E Failed to create descriptor: 3"));
}

TEST_F(GrallocWrapper, WantsExactlyOneBuffer) {
    for (const size_t buffers : {0, 2}) {
        allocator->buffers = buffers;
        EXPECT_EQ(Allocate(), nullptr);
        EXPECT_EQ(stride, -5);
        EXPECT_THAT(
                log.Take(),
                ElementsAre(Format("E Invalid buffer array size (got %zu, expected 1)", buffers)));
        EXPECT_EQ(calls.back().rfind("allocate", 0), 0u) << calls.back();
    }
    EXPECT_FALSE(IsOpen(allocator->lastDescriptor));

    // By exception code: -8 is that of every service-specific error.
    allocator->serviceError = 2;
    EXPECT_EQ(Allocate(), nullptr);
    EXPECT_EQ(stride, -5);
    EXPECT_THAT(log.Take(), ElementsAre("E Failed to allocate buffer: -8"));
}

TEST_F(GrallocWrapper, WritesTheStrideOfABufferThatIsNotImported) {
    mapper->errors["importBuffer"] = fake::Error::NO_RESOURCES;
    allocator->emptyHandles = true;
    EXPECT_EQ(Allocate(), nullptr);
    EXPECT_EQ(stride, 64);
    EXPECT_THAT(log.Take(), ElementsAre("E Failed to import buffer (nil): 5"));

    allocator->emptyHandles = false;
    allocator->stride = 65;
    EXPECT_EQ(Allocate(), nullptr);
    EXPECT_EQ(stride, 65);
    EXPECT_FALSE(IsOpen(allocator->lastDescriptor));
}

TEST_F(GrallocWrapper, ReportsTheMappersErrors) {
    native_handle* const buffer = Allocate();
    native_handle_t* const raw = native_handle_create(0, 1);
    for (const char* operation : {"importBuffer", "lock", "unlock", "get", "freeBuffer"}) {
        mapper->errors[operation] = fake::Error::UNSUPPORTED;
    }
    hidl_vec<uint8_t> out{1, 2, 3};
    EXPECT_EQ(wrapper.importBuffer(hidl_handle(raw)), nullptr);
    EXPECT_EQ(wrapper.lock(buffer, BufferUsage::CPU_READ_OFTEN), nullptr);
    wrapper.unlock(buffer);
    wrapper.get(buffer, type, &out);
    wrapper.freeBuffer(buffer);
    EXPECT_EQ(out, (hidl_vec<uint8_t>{1, 2, 3}));
    EXPECT_THAT(log.Take(), ElementsAre(Format("E Failed to import buffer %p: 7", raw),
                                        Format("E Failed to lock buffer %p: 7", buffer),
                                        Format("E Failed to unlock buffer %p: 7", buffer),
                                        Format("E Failed to unlock buffer %p: 7", buffer),
                                        Format("E Failed to free buffer %p", buffer)));
    native_handle_delete(raw);
}

// Only a failed free is reported, and none ends the process.
TEST_F(GrallocWrapper, SurvivesAMapperThatIsGone) {
    native_handle* const buffer = Allocate();
    native_handle_t* const raw = native_handle_create(0, 1);
    mapper->broken = {"createDescriptor", "importBuffer", "lock", "unlock", "get", "freeBuffer"};
    hidl_vec<uint8_t> out{1};
    EXPECT_EQ(Allocate(), nullptr);
    EXPECT_EQ(wrapper.importBuffer(hidl_handle(raw)), nullptr);
    EXPECT_EQ(wrapper.lock(buffer, BufferUsage::CPU_READ_OFTEN), nullptr);
    wrapper.unlock(buffer);
    wrapper.get(buffer, type, &out);
    EXPECT_EQ(out.size(), 1u);
    EXPECT_THAT(log.Take(), IsEmpty());
    wrapper.freeBuffer(buffer);
    EXPECT_THAT(log.Take(), ElementsAre(Format("E Failed to free buffer %p", buffer)));
    native_handle_delete(raw);
}

TEST_F(GrallocWrapper, ImportsFences) {
    int fd = 77;
    EXPECT_TRUE(wrapper.importFence(nullptr, fd));
    EXPECT_EQ(fd, -1);

    const auto deleted = [](native_handle_t* handle) { native_handle_delete(handle); };
    using Fence = std::unique_ptr<native_handle_t, decltype(deleted)>;
    const Fence none(native_handle_create(0, 3), deleted);
    fd = 77;
    EXPECT_TRUE(wrapper.importFence(none.get(), fd));
    EXPECT_EQ(fd, -1);

    const Fence one(native_handle_create(1, 0), deleted);
    one->data[0] = open("/dev/null", O_RDONLY | O_CLOEXEC);
    EXPECT_TRUE(wrapper.importFence(one.get(), fd));
    EXPECT_NE(fd, one->data[0]);
    EXPECT_TRUE(IsOpen(fd));
    wrapper.closeFence(fd);
    EXPECT_FALSE(IsOpen(fd));
    close(one->data[0]);
    EXPECT_THAT(log.Take(), IsEmpty());

    EXPECT_FALSE(wrapper.importFence(one.get(), fd));
    EXPECT_LT(fd, 0);
    const Fence two(native_handle_create(2, 0), deleted);
    fd = 77;
    EXPECT_FALSE(wrapper.importFence(two.get(), fd));
    EXPECT_EQ(fd, 77);
    EXPECT_THAT(log.Take(), ElementsAre(Format("E failed to dup fence fd %d", one->data[0]),
                                        "E invalid fence handle with 2 file descriptors"));
}

TEST_F(GrallocWrapper, ClosesFencesFromDescriptorZeroOn) {
    wrapper.closeFence(-1);
    const int saved = fcntl(0, F_DUPFD_CLOEXEC, 3);
    ASSERT_EQ(dup2(open("/dev/null", O_RDONLY | O_CLOEXEC), 0), 0);
    wrapper.closeFence(0);
    EXPECT_FALSE(IsOpen(0));
    if (saved >= 0) {
        dup2(saved, 0);
        close(saved);
    }
}

}  // namespace
}  // namespace test
