// A client that takes whatever the service tells it, and lends nothing.
#pragma once

#include <aidl/vendor/zel/hardware/camera/offlinecamera/BnOfflineCameraCallback.h>

namespace offlinecamera {

class QuietClient
    : public ::aidl::vendor::zel::hardware::camera::offlinecamera::BnOfflineCameraCallback {
  public:
    using NotifyMsg = ::aidl::android::hardware::camera::device::NotifyMsg;
    using StreamBuffer = ::aidl::android::hardware::camera::device::StreamBuffer;
    using BufferRequestStatus = ::aidl::android::hardware::camera::device::BufferRequestStatus;
    using Result = ::aidl::vendor::zel::hardware::camera::offlinecamera::OfflineCaptureResult;
    using BufferRequest =
            ::aidl::vendor::zel::hardware::camera::offlinecamera::OfflineBufferRequest;
    using BufferRet = ::aidl::vendor::zel::hardware::camera::offlinecamera::OfflineStreamBufferRet;

    ndk::ScopedAStatus notify(const std::vector<NotifyMsg>&) override {
        return ndk::ScopedAStatus::ok();
    }
    ndk::ScopedAStatus processCaptureResult(const std::vector<Result>&) override {
        return ndk::ScopedAStatus::ok();
    }
    ndk::ScopedAStatus requestStreamBuffers(const std::vector<BufferRequest>&,
                                            std::vector<BufferRet>*,
                                            BufferRequestStatus* status) override {
        *status = BufferRequestStatus::FAILED_UNKNOWN;
        return ndk::ScopedAStatus::ok();
    }
    ndk::ScopedAStatus returnStreamBuffers(const std::vector<StreamBuffer>&) override {
        return ndk::ScopedAStatus::ok();
    }
};

}  // namespace offlinecamera
