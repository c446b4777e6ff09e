// The reference service, which keeps what real runs send it as seeds:
//     deviceshell --data DIR --service fuzz_record_seeds vexofflinecameratest -t MMF
// leaves them in DIR/seeds. Their buffers become the fuzzers' own of the same format.
#include <aidl/vendor/zel/hardware/camera/offlinecamera/BnOfflineCameraSession.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>

#include "host/services/offlinecamera/service.h"
#include "seed.h"

namespace {

using namespace ::aidl::vendor::zel::hardware::camera::offlinecamera;
using ndk::ScopedAStatus;

constexpr char kFolder[] = "/data/vendor/camera/seeds";

class RecordingSession : public BnOfflineCameraSession {
  public:
    explicit RecordingSession(std::shared_ptr<IOfflineCameraSession> session)
        : mSession(std::move(session)) {}

    ScopedAStatus configureOfflineStreams(const OfflineSessionConfigureInfo& info) override {
        AParcel parcel;
        require(ndk::AParcel_writeData(&parcel, info) == STATUS_OK);
        mName = "run_mode" + std::to_string(info.opMode);
        mCalls += call(0, 0, parcel);
        saveSeed(std::string(kFolder) + "/records/" + mName + "_configuration", record(1, info));
        return mSession->configureOfflineStreams(info);
    }
    ScopedAStatus processOfflineRequest(const std::vector<OfflineRequestInfo>& requests,
                                        int32_t* frameNumber) override {
        AParcel parcel;
        require(ndk::AParcel_writeVector(&parcel, requests) == STATUS_OK);
        mCalls += call(0, 1, parcel);
        saveSeed(std::string(kFolder) + "/records/" + mName + "_request", record(0, requests[0]));
        return mSession->processOfflineRequest(requests, frameNumber);
    }
    ScopedAStatus closeOfflineSession() override {
        saveSeed(std::string(kFolder) + "/services/" + mName, mCalls + call(0, 2, AParcel()));
        return mSession->closeOfflineSession();
    }

  private:
    const std::shared_ptr<IOfflineCameraSession> mSession;
    std::string mName;
    std::string mCalls;
};

class RecordingService : public offlinecamera::OfflineCameraService {
  public:
    using OfflineCameraService::OfflineCameraService;

    ScopedAStatus openOfflineSession(const std::string& name,
                                     const std::shared_ptr<IOfflineCameraCallback>& callback,
                                     std::shared_ptr<IOfflineCameraSession>* session) override {
        ScopedAStatus status = OfflineCameraService::openOfflineSession(name, callback, session);
        if (status.isOk()) *session = ndk::SharedRefBase::make<RecordingSession>(*session);
        return status;
    }
};

}  // namespace

int main() {
    ABinderProcess_startThreadPool();
    const auto service = ndk::SharedRefBase::make<RecordingService>(
            offlinecamera::ImportedBuffer::IMapper::getService(), offlinecamera::FaultInjector());
    require(AServiceManager_addService(service->asBinder().get(), RecordingService::kInstance) ==
            EX_NONE);
    ABinderProcess_joinThreadPool();
}
