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

// Small frames with a crop: RAW10 and YUV inputs of 16 x 12, YUV outputs of 12 x 8.
inline constexpr int32_t kWidth = 16;
inline constexpr int32_t kHeight = 12;
inline constexpr int32_t kBlobSize = 20000;

/** A mosaic that differs from frame to frame. */
uint16_t MosaicPixel(int frame, uint32_t x, uint32_t y);

/** Writes MosaicPixel into a RAW10 buffer, or waves into a YUV one. */
void Fill(const NativeHandle& handle, const Stream& stream, int frame);

/** The configurations that the tool sends, with small frames. */
OfflineSessionConfigureInfo Configuration(OpMode mode);

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
