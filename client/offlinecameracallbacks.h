// The binder object through which the service delivers results and borrows buffers.
#pragma once

#include <aidl/android/hardware/camera/device/BufferRequestStatus.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/BnOfflineCameraCallback.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineBufferRequest.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineCaptureResult.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineStreamBufferRet.h>

#include <cstdint>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "vexofflinecameraclient.h"

namespace vendor::zel::hardware::camera::offlinecamera::implementation {

using ::aidl::android::hardware::camera::device::BufferRequestStatus;
using ::aidl::vendor::zel::hardware::camera::offlinecamera::BnOfflineCameraCallback;
using ::aidl::vendor::zel::hardware::camera::offlinecamera::OfflineBufferRequest;
using ::aidl::vendor::zel::hardware::camera::offlinecamera::OfflineCaptureResult;
using ::aidl::vendor::zel::hardware::camera::offlinecamera::OfflineStreamBufferRet;

// Its operations run on binder threads, two at once at times. An empty list, and a missing place
// for an answer, is a service-specific error 1 "ILLEGAL_ARGUMENT"; everything else answers OK and
// shows problems in the log only.
class OfflineCameraClient::OfflineCameraCallBacks : public BnOfflineCameraCallback {
  public:
    // `client` is borrowed for life and may be null.
    explicit OfflineCameraCallBacks(OfflineCameraClient* client);
    ~OfflineCameraCallBacks() override;

    // resultcallbacks.cpp
    ::ndk::ScopedAStatus notify(const std::vector<NotifyMsg>& msgs) override;
    ::ndk::ScopedAStatus processCaptureResult(
            const std::vector<OfflineCaptureResult>& results) override;

    // bufferrequests.cpp
    ::ndk::ScopedAStatus requestStreamBuffers(const std::vector<OfflineBufferRequest>& requests,
                                              std::vector<OfflineStreamBufferRet>* rets,
                                              BufferRequestStatus* status) override;
    ::ndk::ScopedAStatus returnStreamBuffers(const std::vector<StreamBuffer>& buffers) override;

  private:
    static ::ndk::ScopedAStatus IllegalArgument();

    // One result into m_resultFrameInfos; called with the client's m_resultLock held.
    void ProcessOfflineResult(const OfflineCaptureResult& result);
    void UpdateResultFrameInfo(const OfflineFrameInfo& frameInfo, ClientFrameInfo* record);

    // Allocates and lends one buffer of the stream; called with m_bufferLock held.
    StreamBuffer LendBuffer(const Stream& stream);

    OfflineCameraClient* m_client;
    std::mutex m_bufferLock;

    // One single-entry map per lent buffer.
    std::vector<std::unordered_map<uint64_t, native_handle*>> m_streamBufferMaps;
    int64_t m_nextBufferId = 1;
};

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation
