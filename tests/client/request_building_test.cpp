// One request per mode: its buffers, their bookkeeping, and what a failing step leaves.

#include <system/camera_metadata.h>

#include "tests/support/client_fixture.h"

using ::aidl::android::hardware::camera::device::BufferStatus;

namespace test {
namespace {

const char kFaceFile[] = "offlinecameratest/mmf_fd.yuv";
const char kYuvFile[] = "offlinecameratest/4000_3000_NV12.yuv";

class RequestBuilding : public ClientTest {
  public:
    int32_t Build() {
        around.calls.clear();
        return client.InitOfflineRequest(&client.m_configureInfo);
    }

    // The calls for one buffer of this geometry, before it is locked.
    static Lines AllocationCalls(const std::string& geometry) {
        return {"createDescriptor '' " + geometry + " reserved 0",
                "allocate '' " + geometry + " reserved 0 x1", "importBuffer",
                "get android.hardware.graphics.common.StandardMetadataType 10"};
    }

    std::vector<int64_t> InputIds(size_t frame) {
        const auto& buffers = client.m_offlineRequests.at(0).inFrameInfos.at(frame).buffers;
        std::vector<int64_t> ids;
        for (const StreamBuffer& buffer : buffers) ids.push_back(buffer.bufferId);
        return ids;
    }
};

auto Count(const Lines& lines, const std::string& line) {
    return std::count(lines.begin(), lines.end(), line);
}

TEST_F(RequestBuilding, B2YFillsOneRawInputAndHasOneYuvOutput) {
    Configure(0);
    ProvideScanlines(3);
    const std::string rows(64 * 3, 'r');
    data.Write(kRawFile, rows);
    data.Write("metadata/original_dump.bin", std::string("\x05\0\0\0m", 5));
    EXPECT_EQ(Build(), 0);

    EXPECT_EQ(around.calls, Joined({AllocationCalls("4096x3072 layers 1 format 37 usage 3"),
                                    {"lock 3", "unlock"},
                                    AllocationCalls("4000x3000 layers 1 format 35 usage 2")}));

    const OfflineRequestInfo& request = client.m_offlineRequests.at(0);
    EXPECT_EQ(request.frameNumber, -1);
    EXPECT_EQ(request.reserved, 0);
    EXPECT_THAT(request.metadata, IsEmpty());
    ASSERT_EQ(request.inFrameInfos.size(), 1u);
    EXPECT_EQ(request.inFrameInfos[0].numPartialMetadata, 0);
    EXPECT_THAT(request.inFrameInfos[0].metadata, ElementsAre(5, 0, 0, 0, 'm'));
    ASSERT_EQ(request.inFrameInfos[0].buffers.size(), 1u);
    ASSERT_EQ(request.outputBuffers.size(), 1u);

    const StreamBuffer& wire = request.inFrameInfos[0].buffers[0];
    const ClientCaptureBuffer& kept = Captured(0);
    EXPECT_EQ(wire.streamId, 0);
    EXPECT_EQ(wire.bufferId, 1);
    EXPECT_EQ(wire.status, BufferStatus::OK);
    EXPECT_TRUE(wire.acquireFence.fds.empty() && wire.acquireFence.ints.empty());
    EXPECT_TRUE(wire.releaseFence.fds.empty() && wire.releaseFence.ints.empty());
    ASSERT_EQ(wire.buffer.fds.size(), 1u);
    EXPECT_NE(wire.buffer.fds[0].get(), kept.importedBuf->data[0]);
    EXPECT_THAT(wire.buffer.ints, ElementsAre(7, 11));
    EXPECT_EQ(request.outputBuffers[0].streamId, 1);
    EXPECT_EQ(request.outputBuffers[0].bufferId, 1);

    EXPECT_EQ(std::string(around.mapper->Memory(kept.importedBuf), rows.size()), rows);
    EXPECT_EQ(kept.bufferId, 1u);
    EXPECT_EQ(kept.bufferSize, 4096u);
    EXPECT_EQ(kept.stride, 64);
    EXPECT_EQ(kept.scanline, 3);
    EXPECT_EQ(TheDisplayMapper().asked.at(0).height, 3072);
    const ClientCaptureRequest& record = client.m_captureRequests[0];
    EXPECT_EQ(record.format, PixelFormat::RAW10);
    EXPECT_EQ(record.usage, 3u);
    EXPECT_EQ(record.width, 4096u);
    EXPECT_EQ(record.height, 3072u);
    EXPECT_EQ(record.dataSpace, Dataspace::UNKNOWN);
    EXPECT_EQ(client.m_allocatedHandles.size(), 2u);
}

TEST_F(RequestBuilding, Y2JAllocatesABlobAndMakesItsMetadata) {
    Configure(1);
    data.Write("metadata/original_dump.bin", "not read");
    EXPECT_EQ(Build(), 5);
    EXPECT_EQ(log.Take().back(), "E load source yuv frame failed");
    client.m_captureRequests.clear();
    data.Write(kYuvFile, "");
    EXPECT_EQ(Build(), 0);
    EXPECT_THAT(around.calls,
                Contains("createDescriptor '' 24000000x1 layers 1 format 33 usage 3 reserved 0"));
    EXPECT_EQ(log.Take().back(),
              Format("I output streamId 1, bufferStride 64, bufferScanline 0, buffer %p width "
                     "24000000, height 1 bufferSize  4096",
                     Captured(1).importedBuf));
    EXPECT_EQ(client.m_captureRequests[1].width, 4000u);
    EXPECT_EQ(client.m_captureRequests[1].height, 3000u);
    EXPECT_EQ(client.m_captureRequests[1].dataSpace, Dataspace::JFIF);

    const auto& metadata = client.m_offlineRequests.at(0).inFrameInfos.at(0).metadata;
    ASSERT_EQ(metadata.size(), 288u);
    const auto* blob = reinterpret_cast<const camera_metadata_t*>(metadata.data());
    EXPECT_EQ(get_camera_metadata_size(blob), 288u);
    EXPECT_EQ(get_camera_metadata_entry_count(blob), 1u);
    camera_metadata_ro_entry_t entry{};
    ASSERT_EQ(find_camera_metadata_ro_entry(blob, 0x70003, &entry), 0);
    ASSERT_EQ(entry.count, 1u);
    EXPECT_EQ(entry.data.i32[0], 90);
}

TEST_F(RequestBuilding, MmfHasThreeFramesAndForgivesEarlierFailures) {
    Configure(3);
    data.Write(kFaceFile, "");
    data.Write("metadata/original_dump.bin", std::string("\x05\0\0\0m", 5));
    EXPECT_EQ(Build(), 0);
    ASSERT_EQ(client.m_offlineRequests.size(), 1u);
    EXPECT_EQ(client.m_offlineRequests[0].inFrameInfos.size(), 3u);
    for (const auto& frame : client.m_offlineRequests[0].inFrameInfos) {
        EXPECT_THAT(frame.metadata, SizeIs(5));
    }
    EXPECT_THAT(InputIds(0), ElementsAre(1, 2));
    EXPECT_THAT(InputIds(1), ElementsAre(3, 4));
    EXPECT_THAT(InputIds(2), ElementsAre(5, 6));
    EXPECT_EQ(Captured(0, 2).bufferId, 5u);
    EXPECT_EQ(Captured(1, 2).bufferId, 6u);
    EXPECT_EQ(Captured(2).bufferId, 1u);
    EXPECT_EQ(Count(log.Take(), "E load source raw frame failed"), 3);
}

TEST_F(RequestBuilding, ALastFailureEndsIt) {
    Configure(3);
    data.Write(kRawFile, "");
    EXPECT_EQ(Build(), 5);
    EXPECT_THAT(client.m_offlineRequests, IsEmpty());
    EXPECT_EQ(client.m_allocatedHandles.size(), 6u);  // all inputs, no output
    EXPECT_EQ(Count(around.calls, "unlock"), 6);
    EXPECT_EQ(Count(log.Take(), "E load source mmf fd frame failed"), 3);
}

TEST_F(RequestBuilding, GoesOnWithBuffersThatAreNotThere) {
    ConfigureB2Y();
    around.mapper->errors["importBuffer"] = fake::Error::NO_RESOURCES;
    EXPECT_EQ(Build(), 0);
    const StreamBuffer& wire = client.m_offlineRequests.at(0).inFrameInfos.at(0).buffers.at(0);
    EXPECT_EQ(wire.bufferId, 1);
    EXPECT_TRUE(wire.buffer.fds.empty() && wire.buffer.ints.empty());
    EXPECT_EQ(Captured(0).importedBuf, nullptr);
    EXPECT_EQ(Captured(0).bufferSize, 0u);
    EXPECT_EQ(Captured(0).stride, 64);  // the allocator's part was done
    EXPECT_THAT(client.m_allocatedHandles, IsEmpty());
    const Lines lines = log.Take();
    EXPECT_THAT(lines, Contains("I input streamId 0, bufferStride 64, bufferScanline 0 buffer "
                                "(nil) width 4096, height 3072 bufferSize  0"));
    EXPECT_EQ(Count(lines, "I buffer allocationsize: 0"), 0);
    EXPECT_THAT(lines, Contains("E Failed to lock buffer (nil): 2"));
    EXPECT_THAT(lines, Contains("E Failed to unlock buffer (nil): 2"));
}

TEST_F(RequestBuilding, AnUnknownAllocationSizeIsZero) {
    ConfigureB2Y();
    around.mapper->metadata = {1, 2, 3};
    EXPECT_EQ(Build(), 0);
    EXPECT_EQ(Captured(1).bufferSize, 0u);
    EXPECT_EQ(Count(log.Take(), "I buffer allocationsize: 0"), 2);
}

TEST_F(RequestBuilding, LoadsNothingForOtherFormatsAndModes) {
    Stream stream;
    stream.id = 4;
    // The last one has no source file in this mode.
    for (const auto format :
         {PixelFormat::RAW10, PixelFormat::RGBA_8888, PixelFormat::YCBCR_420_888}) {
        stream.format = format;
        client.m_inputStreams.push_back(stream);
    }
    EXPECT_EQ(Build(), 5);  // of the raw file, which is missing
    log.Take();
    data.Write(kRawFile, "");
    EXPECT_EQ(Build(), 0);
    const Lines lines = log.Take();
    EXPECT_EQ(Count(lines, "W please process this stream format 1"), 1);
    EXPECT_EQ(Count(around.calls, "lock 0"), 3);  // the streams' usage
    for (const std::string& line : lines) EXPECT_EQ(line.find("LoadOffineSourceYUV"), line.npos);
    EXPECT_THAT(InputIds(0), ElementsAre(1, 2, 3));
}

TEST_F(RequestBuilding, AModeWithoutStreamsHasOneEmptyFrame) {
    Configure(5);
    EXPECT_EQ(Build(), 0);
    EXPECT_EQ(client.m_offlineRequests.at(0).inFrameInfos.size(), 1u);
    EXPECT_THAT(InputIds(0), IsEmpty());
    EXPECT_THAT(client.m_offlineRequests[0].outputBuffers, IsEmpty());

    EXPECT_EQ(client.InitOfflineRequest(nullptr), 4);
    EXPECT_EQ(log.Take().back(), "E streamConfig is NULL");
    EXPECT_EQ(client.m_offlineRequests.size(), 1u);
}

}  // namespace
}  // namespace test
