// Fences: signalled, never signalled, and what is no fence.
#include <fcntl.h>
#include <graphics_core/Fence.h>
#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace graphics {
namespace {

TEST(Fence, WaitsUntilReadableButNotForever) {
    EXPECT_TRUE(waitForFence(-1).ok());
    const int fence = eventfd(0, EFD_CLOEXEC);
    const Outcome late = waitForFence(fence, 1);
    EXPECT_EQ(late.error, BufferError::kNoResources);
    EXPECT_NE(late.reason.find("has not signalled within 1 ms"), std::string::npos) << late.reason;
    ASSERT_EQ(eventfd_write(fence, 1), 0);
    EXPECT_TRUE(waitForFence(fence).ok());
    close(fence);
}

TEST(Fence, DescriptorThatCannotSignalIsAnErrorAtOnce) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    close(ends[1]);
    EXPECT_EQ(waitForFence(ends[0]).error, BufferError::kBadValue);  // hung up
    close(ends[0]);
    EXPECT_EQ(waitForFence(1 << 20).error, BufferError::kBadValue);  // not open
}

TEST(Fence, HandleHoldsAtMostOneDescriptor) {
    int fd = 0;
    EXPECT_TRUE(fenceDescriptor(nullptr, &fd).ok());
    EXPECT_EQ(fd, -1);
    const auto descriptorOf = [&](int fds, int ints, int value) {
        native_handle_t* handle = native_handle_create(fds, ints);
        for (int i = 0; i < fds + ints; ++i) handle->data[i] = value;
        const BufferError error = fenceDescriptor(handle, &fd).error;
        native_handle_delete(handle);
        return error;
    };
    EXPECT_EQ(descriptorOf(0, 0, 0), BufferError::kNone);
    EXPECT_EQ(fd, -1);
    EXPECT_EQ(descriptorOf(1, 0, 7), BufferError::kNone);
    EXPECT_EQ(fd, 7);
    EXPECT_EQ(descriptorOf(1, 0, -1), BufferError::kBadValue);
    EXPECT_EQ(descriptorOf(2, 0, 7), BufferError::kBadValue);
    EXPECT_EQ(descriptorOf(1, 1, 7), BufferError::kBadValue);
}

}  // namespace
}  // namespace graphics
