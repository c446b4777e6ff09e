// A service in the test's own process with one open session, and requests with filled buffers.
#pragma once

#include <gmock/gmock.h>

#include <map>
#include <utility>

#include "recording_client.h"
#include "service.h"

namespace offlinecamera {

using ::aidl::android::hardware::camera::device::BufferStatus;
using ::aidl::vendor::zel::hardware::camera::offlinecamera::IOfflineCameraSession;
using ::aidl::vendor::zel::hardware::camera::offlinecamera::OfflineFrameInfo;

/** A mosaic that differs from frame to frame. */
uint16_t MosaicPixel(int frame, uint32_t x, uint32_t y);

/** Writes MosaicPixel into a RAW10 buffer, or waves into a YUV one. */
void Fill(const NativeHandle& handle, const Stream& stream, int frame);

class SessionFixture : public testing::Test {
  protected:
    /** Starts a service with these faults ("NAME" or "NAME=ARG") and opens a session. */
    void Open(const std::vector<std::string>& faults = {});

    /** Opens a session in `mode`. */
    void OpenAndConfigure(OpMode mode, const std::vector<std::string>& faults = {});

    /** A request as the tool makes it: input ids from 1 on across frames, output ids from 1 on. */
    OfflineRequestInfo MakeInfo();

    /** Sends one request. @return the frame number, or the text of the refusal */
    std::string Process(OfflineRequestInfo info);

    /** The handle that MakeInfo last made for a stream and buffer id. */
    const NativeHandle& Handle(int32_t streamId, int64_t bufferId) {
        return mHandles[{streamId, bufferId}];
    }

    void Close() { EXPECT_TRUE(mSession->closeOfflineSession().isOk()); }

    std::shared_ptr<OfflineCameraService> mService;
    std::shared_ptr<RecordingClient> mClient = ndk::SharedRefBase::make<RecordingClient>();
    std::shared_ptr<IOfflineCameraSession> mSession;
    OfflineSessionConfigureInfo mConfiguration;

  private:
    std::vector<StreamBuffer> MakeBuffers(StreamType type, int frame, int64_t* nextId);

    std::map<std::pair<int32_t, int64_t>, NativeHandle> mHandles;
};

}  // namespace offlinecamera
