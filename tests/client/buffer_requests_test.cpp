// Buffers lent to the service, and the comparison of a result's buffers with a request's.

#include "tests/support/client_fixture.h"

using ::aidl::android::hardware::camera::device::StreamBuffersVal;

namespace test {
namespace {

OfflineBufferRequest Request(int32_t streamId, PixelFormat format, int32_t count) {
    OfflineBufferRequest request;
    request.stream.id = streamId;
    request.stream.width = 640;
    request.stream.height = 480;
    request.stream.format = format;
    request.stream.usage = BufferUsage::CPU_READ_OFTEN;
    request.stream.bufferSize = 99;
    request.numBuffersRequested = count;
    return request;
}

class BufferRequests : public ClientTest {
  public:
    ::ndk::ScopedAStatus Ask(const std::vector<OfflineBufferRequest>& requests) {
        return client.m_callback->requestStreamBuffers(requests, &rets, &status);
    }
    const std::vector<StreamBuffer>& Lent(size_t ret) {
        return rets.at(ret).val.get<StreamBuffersVal::Tag::buffers>();
    }
    ::ndk::ScopedAStatus Return(const std::vector<int64_t>& ids) {
        std::vector<StreamBuffer> buffers(ids.size());
        for (size_t i = 0; i < ids.size(); ++i) buffers[i].bufferId = ids[i];
        return client.m_callback->returnStreamBuffers(buffers);
    }

    std::vector<OfflineStreamBufferRet> rets;
    BufferRequestStatus status = static_cast<BufferRequestStatus>(77);
};

TEST_F(BufferRequests, LendsBuffersUnderFreshIds) {
    rets.resize(5);
    EXPECT_TRUE(Ask({Request(4, PixelFormat::YCBCR_420_888, 2), Request(5, PixelFormat::BLOB, 1),
                     Request(6, PixelFormat::BLOB, -1)})
                        .isOk());
    EXPECT_EQ(static_cast<int>(status), 77);  // never written
    ASSERT_THAT(rets, SizeIs(3));
    EXPECT_THAT(Lent(2), IsEmpty());  // a negative number
    EXPECT_EQ(rets[1].stream, Request(5, PixelFormat::BLOB, 1).stream);
    ASSERT_THAT(Lent(0), SizeIs(2));
    EXPECT_EQ(Lent(0)[1].streamId, 4);
    EXPECT_EQ(Lent(0)[1].bufferId, 2);
    EXPECT_THAT(Lent(0)[1].buffer.fds, SizeIs(1));
    EXPECT_THAT(Lent(0)[1].buffer.ints, ElementsAre(7, 11));
    ASSERT_THAT(Lent(1), SizeIs(1));
    EXPECT_EQ(Lent(1)[0].bufferId, 3);
    EXPECT_THAT(around.calls,
                Contains("createDescriptor '' 99x1 layers 1 format 33 usage 3 reserved 0"));
    EXPECT_THAT(client.m_allocatedHandles, SizeIs(3));
    EXPECT_THAT(client.m_captureRequests, IsEmpty());

    // The logged size is the stream's, also for a BLOB.
    const Lines lines = log.Take();
    ASSERT_THAT(lines, SizeIs(9));
    EXPECT_EQ(lines[6], "I buffer allocationsize: 4096");
    EXPECT_THAT(lines[7], ::testing::MatchesRegex("I streamId 5, bufferStride 64, bufferScanline "
                                                  "0, buffer 0x[0-9a-f]+ width 640, height 480"));
    EXPECT_EQ(lines[8], "I m_nextBufferId 3");
}

TEST_F(BufferRequests, NumbersBuffersThatCannotBeAllocated) {
    around.allocator->serviceError = 1;
    EXPECT_TRUE(Ask({Request(4, PixelFormat::YCBCR_420_888, 1)}).isOk());
    EXPECT_EQ(Lent(0).at(0).bufferId, 1);
    EXPECT_THAT(Lent(0).at(0).buffer.fds, IsEmpty());
    EXPECT_THAT(client.m_allocatedHandles, IsEmpty());
    EXPECT_EQ(log.Take(), (Lines{"E Failed to allocate buffer: -8",
                                 "I streamId 4, bufferStride 0, bufferScanline 0, buffer (nil) "
                                 "width 640, height 480",
                                 "I m_nextBufferId 1"}));
    EXPECT_TRUE(Ask({Request(4, PixelFormat::YCBCR_420_888, 1)}).isOk());
    EXPECT_EQ(Lent(0).at(0).bufferId, 2);
}

TEST_F(BufferRequests, RefusesEmptyListsAndMissingPlaces) {
    const std::vector<OfflineBufferRequest> one{Request(4, PixelFormat::BLOB, 1)};
    rets.resize(1);
    ExpectIllegalArgument(Ask({}));
    ExpectIllegalArgument(client.m_callback->requestStreamBuffers(one, nullptr, &status));
    ExpectIllegalArgument(client.m_callback->requestStreamBuffers(one, &rets, nullptr));
    ExpectIllegalArgument(Return({}));
    EXPECT_THAT(rets, SizeIs(1));
    EXPECT_THAT(log.Take(), IsEmpty());
    EXPECT_TRUE(Ask(one).isOk());  // the lock is free and no id was used up
    EXPECT_EQ(Lent(0).at(0).bufferId, 1);
}

TEST_F(BufferRequests, TakesBuffersBackOnce) {
    EXPECT_TRUE(Ask({Request(4, PixelFormat::BLOB, 3)}).isOk());
    log.Take();
    around.calls.clear();
    EXPECT_TRUE(Return({3, 0, 1}).isOk());
    EXPECT_THAT(log.Take(), IsEmpty());
    EXPECT_TRUE(Return({1, 2, 44, 0}).isOk());
    EXPECT_EQ(log.Take(), (Lines{"E returnStreamBuffers: unknown buffer ID 1",
                                 "E returnStreamBuffers: unknown buffer ID 44"}));
    EXPECT_THAT(client.m_allocatedHandles, SizeIs(3));
    EXPECT_THAT(around.calls, IsEmpty());  // nothing is freed
}

TEST_F(BufferRequests, ComparesBuffersAsSets) {
    const auto same = [this](const Buffers& resultKeys, const Buffers& requestKeys) {
        std::vector<ClientStreamBuffer> result;
        for (const auto& [stream, id] : resultKeys) result.push_back({stream, id});
        std::vector<StreamBuffer> request;
        for (const auto& [stream, id] : requestKeys)
            request.push_back({stream, id, {}, {}, {}, {}});
        return client.ContainsTheSameBuffers(&result, &request);
    };
    EXPECT_TRUE(same({{1, 5}, {2, 1}}, {{2, 1}, {1, 5}}));
    EXPECT_EQ(log.Take(), (Lines{"I ContainsTheSameBuffers result streamId  1 bufferId  5",
                                 "I ContainsTheSameBuffers result streamId  2 bufferId  1",
                                 "I ContainsTheSameBuffers request streamId  2 bufferId  1",
                                 "I ContainsTheSameBuffers request streamId  1 bufferId  5"}));
    EXPECT_TRUE(same({}, {}));
    EXPECT_TRUE(same({{1, 5}, {1, 5}}, {{1, 5}}));
    EXPECT_FALSE(same({}, {{1, 5}}));
    EXPECT_FALSE(same({{1, 5}}, {{5, 1}}));
    EXPECT_FALSE(same({{1, 5}}, {{1, 5 + (int64_t{1} << 32)}}));
    EXPECT_FALSE(same({{1, 5}, {1, 6}}, {{1, 5}}));
}

}  // namespace
}  // namespace test
