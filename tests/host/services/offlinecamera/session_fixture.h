// A service in the test's own process with one open session, and requests whose buffers come from
// the real allocator of the stand-in device.
#pragma once

#include "recording_client.h"
#include "service.h"

namespace offlinecamera {

using ::aidl::android::hardware::graphics::common::PixelFormat;
using device::StreamType;

Stream MakeStream(int32_t id, StreamType type, PixelFormat format, int32_t width, int32_t height);

// The configurations that the tool sends, with small frames and a crop: RAW10 and YUV inputs of
// 16 x 12, YUV outputs of 12 x 8, BLOB buffers of 20000 bytes.
OfflineSessionConfigureInfo Configuration(OpMode mode);

class SessionFixture : public testing::Test {
  protected:
    // Starts a service with these faults ("NAME" or "NAME=ARG") and opens a session.
    void Open(const std::vector<std::string>& faults = {});

    // Configures the open session, and so do requests, with m_configuration.
    void Configure(OfflineSessionConfigureInfo configuration);

    void OpenAndConfigure(OpMode mode, const std::vector<std::string>& faults = {}) {
        Open(faults);
        Configure(Configuration(mode));
    }

    // A request as the tool makes it: input ids from 1 on across frames, output ids from 1 on.
    OfflineRequestInfo MakeInfo();

    // Sends one request. Returns the frame number, or the text of the refusal.
    std::string Process(OfflineRequestInfo info);

    void Close() { EXPECT_TRUE(m_session->closeOfflineSession().isOk()); }

    std::shared_ptr<OfflineCameraService> m_service;
    std::shared_ptr<RecordingClient> m_client = ndk::SharedRefBase::make<RecordingClient>();
    std::shared_ptr<package::IOfflineCameraSession> m_session;
    OfflineSessionConfigureInfo m_configuration;
};

}  // namespace offlinecamera
