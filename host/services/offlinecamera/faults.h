// Wrong behaviour on demand. The service's own code calls one hook at each place where a fault can
// act; without faults every hook does nothing.
#pragma once

#include <aidl/android/hardware/camera/device/NotifyMsg.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/IOfflineCameraCallback.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineCaptureResult.h>
#include <imaging/planes.h>

#include <map>
#include <string>
#include <vector>

#include "fault_names.h"
#include "imported_buffer.h"
#include "request.h"
#include "session_worker.h"

namespace offlinecamera {

using ::aidl::android::hardware::camera::device::NotifyMsg;
using ::aidl::vendor::zel::hardware::camera::offlinecamera::IOfflineCameraCallback;
using ::aidl::vendor::zel::hardware::camera::offlinecamera::OfflineCaptureResult;

/** Unchanging once the service runs, so any thread may call it. */
class FaultInjector {
  public:
    /** Switches a fault on. @param text "NAME" or "NAME=ARG". @return empty, or what is wrong */
    [[nodiscard]] std::string Add(const std::string& text);

    /** One line for each fault there is. */
    static std::string Help();

    // In the calls. A status that is not OK is the call's answer.
    ndk::ScopedAStatus AtOpen() const;
    ndk::ScopedAStatus AtConfigure() const;
    ndk::ScopedAStatus AtProcess() const;
    bool GivesNoSession() const { return Has(Fault::kOpenNull); }
    bool WaitsForTheResult() const { return Has(Fault::kEarlyResult); }

    // On the session's thread.
    void BeforeFrame(const std::shared_ptr<IOfflineCameraCallback>& client,
                     const ::android::sp<ImportedBuffer::IMapper>& mapper, const Stream& stream,
                     const StopSignal& stop) const;
    bool ShutterComesLast() const { return Has(Fault::kResultFirst); }
    void AlterMessages(std::vector<NotifyMsg>* messages) const;
    void AlterResults(std::vector<OfflineCaptureResult>* results, const StopSignal& stop) const;
    void ShrinkPicture(imaging::Nv12View* picture) const;

  private:
    bool Has(Fault fault) const { return mArguments.count(fault) != 0; }
    ndk::ScopedAStatus AtCall(const char* operation, Fault die, Fault error) const;
    void BorrowAndReturn(const std::shared_ptr<IOfflineCameraCallback>& client,
                         const ::android::sp<ImportedBuffer::IMapper>& mapper,
                         const Stream& stream) const;

    std::map<Fault, int64_t> mArguments;
};

}  // namespace offlinecamera
