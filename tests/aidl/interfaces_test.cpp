// The package's three interfaces: names, transaction codes, version and hash, and the bytes of
// calls.
#include <aidl/vendor/zel/hardware/camera/offlinecamera/BnOfflineCameraCallback.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/BnOfflineCameraService.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/BnOfflineCameraSession.h>
#include <gmock/gmock.h>

#include "hex.h"
#include "tests/host/aidlc/parcels.h"

namespace aidl::vendor::zel::hardware::camera::offlinecamera {
namespace {

using namespace ::aidl::android::hardware::camera::device;
using testing::ElementsAre;

using Service = IOfflineCameraService;
using Session = IOfflineCameraSession;
using Callback = IOfflineCameraCallback;

static_assert(Service::TRANSACTION_openOfflineSession == 4);

// What the far side of a proxy saw, and what it answers.
struct FarSide {
    uint32_t code = 0;
    Bytes body;  // behind the interface header
    Bytes reply = Words({0});
};

binder_status_t Record(AIBinder* binder, transaction_code_t code, const AParcel* in, AParcel* out) {
    auto* far = static_cast<FarSide*>(AIBinder_getUserData(binder));
    far->code = code;
    const int32_t start = AParcel_getDataPosition(in);
    const ndk::ScopedAParcel body(AParcel_create());
    AParcel_appendFrom(in, body.get(), start, AParcel_getDataSize(in) - start);
    far->body.resize(static_cast<size_t>(AParcel_getDataSize(body.get())));
    // Fails for a body with objects, which is of no interest here.
    if (!far->body.empty() &&
        AParcel_marshal(body.get(), far->body.data(), 0, far->body.size()) != STATUS_OK) {
        far->body.clear();
    }
    return AParcel_appendFrom(ParcelOf(far->reply).get(), out, 0,
                              static_cast<int32_t>(far->reply.size()));
}

// The code and the bytes of a call that has just been made and must have worked.
std::string Sent(const FarSide& far, const ndk::ScopedAStatus& status) {
    EXPECT_TRUE(status.isOk()) << status;
    return std::to_string(far.code) + ": " + ToHex(far.body);
}

// A proxy whose far side records calls. Same descriptor, another class: as in another process.
template <typename Interface>
std::shared_ptr<Interface> Proxy(FarSide* far) {
    static const AIBinder_Class* const clazz = AIBinder_Class_define(
            Interface::descriptor, [](void* args) { return args; }, [](void*) {}, Record);
    return Interface::fromBinder(ndk::SpAIBinder(AIBinder_new(clazz, far)));
}

TEST(Interfaces, HaveTheirNames) {
    const std::string package = "vendor.zel.hardware.camera.offlinecamera.";
    EXPECT_EQ(Service::descriptor, package + "IOfflineCameraService");
    EXPECT_EQ(Session::descriptor, package + "IOfflineCameraSession");
    EXPECT_EQ(Callback::descriptor, package + "IOfflineCameraCallback");
    EXPECT_EQ(BnOfflineCameraService::makeServiceName("default"),
              package + "IOfflineCameraService/default");
}

TEST(Interfaces, WriteTheirCalls) {
    FarSide far;
    const auto service = Proxy<Service>(&far);
    EXPECT_EQ(Sent(far, service->registerClient(1, nullptr)).substr(0, 11), "2: 01000000");
    EXPECT_EQ(Sent(far, service->unregisterClient(-2)), "3: feffffff");
    const auto session = Proxy<Session>(&far);
    // There, 24 bytes: empty string of 8, no stream, mode 0, no byte.
    EXPECT_EQ(Sent(far, session->configureOfflineStreams({})),
              "1: 01000000 18000000 00000000 00000000 00000000 00000000 00000000");
    EXPECT_EQ(Sent(far, session->closeOfflineSession()), "3: ");
    const auto callback = Proxy<Callback>(&far);
    // One message, there; member 0, there, 16 bytes, all zero.
    EXPECT_EQ(Sent(far, callback->notify({NotifyMsg()})),
              "1: 01000000 01000000 00000000 01000000 10000000 00000000 00000000 00000000");
    EXPECT_EQ(Sent(far, callback->processCaptureResult({})), "2: 00000000");
    EXPECT_EQ(Sent(far, callback->returnStreamBuffers({})), "4: 00000000");
}

TEST(Interfaces, ReadTheirAnswers) {
    FarSide far;
    std::vector<int32_t> modes;
    far.reply = Words({0, 2, 0, 5});
    EXPECT_EQ(Sent(far, Proxy<Service>(&far)->getSupportedOpModes(&modes)), "1: ");
    EXPECT_THAT(modes, ElementsAre(0, 5));

    // No request; the answers' vector has two elements already. Reply: OK, FAILED_PARTIAL, none.
    std::vector<OfflineStreamBufferRet> rets(2);
    BufferRequestStatus status = BufferRequestStatus::OK;
    far.reply = Words({0, 1, 0});
    EXPECT_EQ(Sent(far, Proxy<Callback>(&far)->requestStreamBuffers({}, &rets, &status)),
              "3: 00000000 02000000");
    EXPECT_EQ(status, BufferRequestStatus::FAILED_PARTIAL);
    EXPECT_TRUE(rets.empty());

    const auto session = Proxy<Session>(&far);
    int32_t frame = 0;
    far.reply = Words({0, 42});
    EXPECT_EQ(Sent(far, session->processOfflineRequest({}, &frame)), "2: 00000000");
    EXPECT_EQ(frame, 42);
    // A failed call leaves the result alone; a reply that ends early is a transport failure.
    far.reply = Words({-8, 0, 0, 0, 7});
    EXPECT_EQ(session->processOfflineRequest({}, &frame).getServiceSpecificError(), 7);
    far.reply = Words({0});
    EXPECT_EQ(session->processOfflineRequest({}, &frame).getStatus(), STATUS_NOT_ENOUGH_DATA);
    EXPECT_EQ(frame, 42);
}

TEST(Interfaces, AnswerTheirVersionAndHash) {
    FarSide far;
    int32_t version = 0;
    std::string hash;
    const auto stub =
            ndk::SharedRefBase::make<IOfflineCameraSessionDelegator>(Proxy<Session>(&far));
    ASSERT_TRUE(stub->getInterfaceVersion(&version).isOk());
    ASSERT_TRUE(stub->getInterfaceHash(&hash).isOk());
    EXPECT_EQ(version, 1);
    EXPECT_EQ(hash, "87f0e9b47542c7bda9575afb3ff460ba1887dfd8");
    EXPECT_EQ(Sent(far, stub->closeOfflineSession()), "3: ") << "handed on";

    const auto callback = Proxy<Callback>(&far);
    far.reply = Words({0, 1});
    EXPECT_EQ(Sent(far, callback->getInterfaceVersion(&version)), "16777215: ");
    far.reply = Words({0, 1, 'a'});
    EXPECT_EQ(Sent(far, callback->getInterfaceHash(&hash)), "16777214: ");
    EXPECT_EQ(hash, "a");
}

}  // namespace
}  // namespace aidl::vendor::zel::hardware::camera::offlinecamera
