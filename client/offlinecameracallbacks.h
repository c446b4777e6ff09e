// The binder object that the service calls to deliver results and to borrow buffers.
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

// The operations run on binder threads, also two at once. They answer an empty list, or a null
// pointer for their results, with the service-specific error 1 "ILLEGAL_ARGUMENT", and everything
// else with OK; other problems appear only in the log.
class OfflineCameraClient::OfflineCameraCallBacks : public BnOfflineCameraCallback {
  public:
    // `client` is borrowed and has to outlive the last call. Only notify() tests it for null.
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

    // Adds one result to m_resultFrameInfos. The caller holds the client's m_resultLock.
    void ProcessOfflineResult(const OfflineCaptureResult& result);
    void UpdateResultFrameInfo(const OfflineFrameInfo& frameInfo, ClientFrameInfo* record);

    // Allocates and lends one buffer of the stream. The caller holds m_bufferLock.
    StreamBuffer LendBuffer(const Stream& stream);

    OfflineCameraClient* const m_client;
    std::mutex m_bufferLock;  // guards the two members below; never held with m_resultLock

    // Handles by buffer id: one map per lent buffer, empty once that has been returned.
    std::vector<std::unordered_map<uint64_t, native_handle*>> m_streamBufferMaps;
    int64_t m_nextBufferId = 1;
};

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation
