// Messages and results that the service delivers.

#include <system/camera_metadata.h>

#include "tests/support/client_fixture.h"

using ::aidl::android::hardware::camera::device::BufferStatus;

namespace test {
namespace {

// A result for frame 3 with these output buffer ids.
OfflineCaptureResult Result(const std::vector<int64_t>& bufferIds, int32_t numPartialMetadata,
                            std::vector<uint8_t> metadata = {}) {
    OfflineCaptureResult result;
    result.frameNumber = 3;
    result.outFrameInfo.numPartialMetadata = numPartialMetadata;
    result.outFrameInfo.metadata = std::move(metadata);
    for (const int64_t id : bufferIds) {
        StreamBuffer buffer;
        buffer.streamId = 1;
        buffer.bufferId = id;
        buffer.status = BufferStatus::ERROR;
        buffer.buffer.ints = {5};
        result.outFrameInfo.buffers.push_back(std::move(buffer));
    }
    result.inFrameInfo.numPartialMetadata = 8;
    result.inFrameInfo.buffers.resize(2);
    return result;
}

std::vector<uint8_t> Blob() {
    camera_metadata_t* const block = allocate_camera_metadata(1, 8);
    const auto* bytes = reinterpret_cast<const uint8_t*>(block);
    std::vector<uint8_t> blob(bytes, bytes + get_camera_metadata_size(block));
    free_camera_metadata(block);
    return blob;
}

class ResultCallbacks : public ClientTest {
  public:
    void Deliver(OfflineCaptureResult result) {
        std::vector<OfflineCaptureResult> results;
        results.push_back(std::move(result));
        EXPECT_TRUE(client.m_callback->processCaptureResult(results).isOk());
    }
    ClientFrameInfo& Record() { return client.m_resultFrameInfos.at(3); }
};

TEST_F(ResultCallbacks, NotifyReplacesMessages) {
    EXPECT_TRUE(client.m_callback->notify({Shutter(1), Shutter(2)}).isOk());
    EXPECT_TRUE(client.m_callback->notify({Shutter(3)}).isOk());
    ExpectIllegalArgument(client.m_callback->notify({}));
    ASSERT_THAT(client.m_notifyMessages, SizeIs(1));
    EXPECT_EQ(client.m_notifyMessages[0], Shutter(3));
    EXPECT_EQ(log.Take(), Lines(3, "I notify: callback notify"));
}

// Only notify() looks whether there is a client.
TEST_F(ResultCallbacks, WithoutAClient) {
    const auto orphan =
            ::ndk::SharedRefBase::make<OfflineCameraClient::OfflineCameraCallBacks>(nullptr);
    ExpectIllegalArgument(orphan->notify({Shutter(1)}));
    ExpectIllegalArgument(orphan->processCaptureResult({}));
    EXPECT_EQ(log.Take().back(), "I processCaptureResult: callback capture result");
    EXPECT_DEATH(orphan->processCaptureResult(std::vector<OfflineCaptureResult>(1)), "");
}

TEST_F(ResultCallbacks, RecordsAFrameAndItsUpdate) {
    Deliver(Result({}, 0));
    log.Take();

    // All of it still unknown, so all of it is taken from the next one.
    Deliver(Result({4, 9}, 2, Blob()));
    ASSERT_THAT(Record().buffers, SizeIs(2));
    EXPECT_EQ(Record().buffers[1].streamId, 1);
    EXPECT_EQ(Record().buffers[1].bufferId, 9);
    EXPECT_EQ(Record().buffers[1].buffer, nullptr);
    EXPECT_EQ(Record().buffers[1].status, BufferStatus::ERROR);
    EXPECT_EQ(Record().buffers[1].acquireFence, -1);
    EXPECT_EQ(Record().buffers[1].releaseFence, -1);
    EXPECT_EQ(Record().numPartialMetadata, 2);
    EXPECT_NE(Record().pMetadata, nullptr);
    EXPECT_EQ(log.Take(),
              (Lines{"I processCaptureResult: callback capture result", "I ProcessOfflineResult 1",
                     "I ProcessOfflineResult: outframeinfo numPartialMetadata 2 frame numbrer 3 "
                     "buffer size 2 ",
                     "I GetResultFrameInfo: isBufferUpdate 1 isPartialMetaUpdate 1 isMetaUpdate 1",
                     "I ProcessOfflineResult: inframeinfo numPartialMetadata 8 frame numbrer 3 "
                     "buffer size 2 ",
                     "I ProcessOfflineResult: result notifty"}));

    // All of it known: nothing changes any more.
    const camera_metadata_t* const metadata = Record().pMetadata;
    Deliver(Result({7}, 5));
    EXPECT_THAT(Record().buffers, SizeIs(2));
    EXPECT_EQ(Record().numPartialMetadata, 2);
    EXPECT_EQ(Record().pMetadata, metadata);
    EXPECT_EQ(log.Take().at(3),
              "I GetResultFrameInfo: isBufferUpdate 0 isPartialMetaUpdate 0 isMetaUpdate 0");
}

// Metadata comes with the count: a known count keeps it out, an unknown one takes even its absence.
TEST_F(ResultCallbacks, MetadataFollowsTheCount) {
    Deliver(Result({1}, 2));
    Deliver(Result({}, 2, Blob()));
    EXPECT_EQ(Record().pMetadata, nullptr);
    EXPECT_EQ(log.Take().at(11),
              "I GetResultFrameInfo: isBufferUpdate 0 isPartialMetaUpdate 0 isMetaUpdate 1");

    client.m_resultFrameInfos.clear();
    Deliver(Result({1}, 0, Blob()));
    EXPECT_NE(Record().pMetadata, nullptr);
    Deliver(Result({}, 0));
    EXPECT_EQ(Record().pMetadata, nullptr);
}

TEST_F(ResultCallbacks, MetadataIsTheDeliveredBytesThemselves) {
    std::vector<OfflineCaptureResult> results;
    results.push_back(Result({1}, 1, Blob()));
    results.push_back(Result({2}, 1));
    results[1].frameNumber = 4;
    EXPECT_TRUE(client.m_callback->processCaptureResult(results).isOk());
    EXPECT_EQ(static_cast<const void*>(Record().pMetadata),
              results[0].outFrameInfo.metadata.data());
    EXPECT_EQ(client.m_resultFrameInfos.at(4).buffers.at(0).bufferId, 2);
    EXPECT_EQ(log.Take().at(1), "I ProcessOfflineResult 2");
}

TEST_F(ResultCallbacks, CorruptMetadataIsReportedAndLeftOut) {
    std::vector<uint8_t> longer = Blob();
    longer.push_back(0);
    for (const auto& metadata : {longer, std::vector<uint8_t>{1, 2}}) {
        client.m_resultFrameInfos.clear();
        Deliver(Result({1}, 1, metadata));
        EXPECT_EQ(log.Take().at(4), "E convertFromAidl: input CameraMetadata is corrupt!");
        EXPECT_EQ(Record().pMetadata, nullptr);
        EXPECT_THAT(Record().buffers, SizeIs(1));
    }
}

}  // namespace
}  // namespace test
