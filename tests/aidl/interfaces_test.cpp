// The package's three interfaces: transaction codes, version and hash, and the bytes of requests.
#include <aidl/vendor/zel/hardware/camera/offlinecamera/BnOfflineCameraCallback.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/BnOfflineCameraService.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/BnOfflineCameraSession.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/BpOfflineCameraCallback.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/BpOfflineCameraService.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/BpOfflineCameraSession.h>
#include <gmock/gmock.h>

#include "hex.h"

namespace aidl::vendor::zel::hardware::camera::offlinecamera {
namespace {

using namespace ::aidl::android::hardware::camera::device;
using testing::ElementsAre;

// What the far side of a proxy saw, and what it answers.
struct FarSide {
    uint32_t code = 0;
    Bytes body;  // behind the interface header
    Bytes reply = Hex("00000000");
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
    const ndk::ScopedAParcel reply(AParcel_create());
    AParcel_unmarshal(reply.get(), far->reply.data(), far->reply.size());
    return AParcel_appendFrom(reply.get(), out, 0, AParcel_getDataSize(reply.get()));
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

TEST(ServiceTest, NamesCodesVersion) {
    using I = IOfflineCameraService;
    EXPECT_STREQ(I::descriptor, "vendor.zel.hardware.camera.offlinecamera.IOfflineCameraService");
    EXPECT_EQ(BnOfflineCameraService::makeServiceName("default"),
              "vendor.zel.hardware.camera.offlinecamera.IOfflineCameraService/default");
    static_assert(I::TRANSACTION_openOfflineSession == 4);

    FarSide far;
    const std::shared_ptr<I> service = Proxy<I>(&far);
    far.reply = Hex("00000000 02000000 00000000 05000000");
    std::vector<int32_t> modes;
    EXPECT_EQ(Sent(far, service->getSupportedOpModes(&modes)), "1: ");
    EXPECT_THAT(modes, ElementsAre(0, 5));
    EXPECT_EQ(Sent(far, service->registerClient(1, nullptr)).substr(0, 11), "2: 01000000");
    EXPECT_EQ(Sent(far, service->unregisterClient(-2)), "3: feffffff");
}

TEST(SessionTest, NamesCodesBytes) {
    using I = IOfflineCameraSession;
    EXPECT_STREQ(I::descriptor, "vendor.zel.hardware.camera.offlinecamera.IOfflineCameraSession");

    FarSide far;
    const std::shared_ptr<I> session = Proxy<I>(&far);
    // There, 24 bytes: empty string of 8, no stream, mode 0, no byte.
    EXPECT_EQ(Sent(far, session->configureOfflineStreams({})),
              "1: 01000000 18000000 00000000 00000000 00000000 00000000 00000000");
    far.reply = Hex("00000000 2a000000");
    int32_t frame = 0;
    EXPECT_EQ(Sent(far, session->processOfflineRequest({}, &frame)), "2: 00000000");
    EXPECT_EQ(frame, 42);
    EXPECT_EQ(Sent(far, session->closeOfflineSession()), "3: ");

    // A failed call leaves the result alone; a reply that ends early is a transport failure.
    far.reply = Hex("f8ffffff 00000000 00000000 00000000 07000000");
    EXPECT_EQ(session->processOfflineRequest({}, &frame).getServiceSpecificError(), 7);
    far.reply = Hex("00000000");
    EXPECT_EQ(session->processOfflineRequest({}, &frame).getStatus(), STATUS_NOT_ENOUGH_DATA);
    EXPECT_EQ(frame, 42);
}

TEST(CallbackTest, NamesCodesBytes) {
    using I = IOfflineCameraCallback;
    EXPECT_STREQ(I::descriptor, "vendor.zel.hardware.camera.offlinecamera.IOfflineCameraCallback");

    FarSide far;
    const std::shared_ptr<I> callback = Proxy<I>(&far);
    // One message, there; member 0, there, 16 bytes, all zero.
    EXPECT_EQ(Sent(far, callback->notify({NotifyMsg()})),
              "1: 01000000 01000000 00000000 01000000 10000000 00000000 00000000 00000000");
    EXPECT_EQ(Sent(far, callback->processCaptureResult({})), "2: 00000000");
    EXPECT_EQ(Sent(far, callback->returnStreamBuffers({})), "4: 00000000");

    // No request; the answers' vector has two elements already. Reply: OK, FAILED_PARTIAL, none.
    std::vector<OfflineStreamBufferRet> rets(2);
    far.reply = Hex("00000000 01000000 00000000");
    BufferRequestStatus status = BufferRequestStatus::OK;
    EXPECT_EQ(Sent(far, callback->requestStreamBuffers({}, &rets, &status)),
              "3: 00000000 02000000");
    EXPECT_EQ(status, BufferRequestStatus::FAILED_PARTIAL);
    EXPECT_TRUE(rets.empty());
}

TEST(VersionTest, StubAndProxyAnswer) {
    FarSide far;
    int32_t version = 0;
    std::string hash;
    const auto stub = ndk::SharedRefBase::make<IOfflineCameraSessionDelegator>(
            Proxy<IOfflineCameraSession>(&far));
    ASSERT_TRUE(stub->getInterfaceVersion(&version).isOk());
    ASSERT_TRUE(stub->getInterfaceHash(&hash).isOk());
    EXPECT_EQ(version, 1);
    EXPECT_EQ(hash, "87f0e9b47542c7bda9575afb3ff460ba1887dfd8");
    EXPECT_EQ(Sent(far, stub->closeOfflineSession()), "3: ") << "handed on";

    const auto callback = Proxy<IOfflineCameraCallback>(&far);
    far.reply = Hex("00000000 01000000");
    EXPECT_EQ(Sent(far, callback->getInterfaceVersion(&version)), "16777215: ");
    far.reply = Hex("00000000 01000000 61000000");
    EXPECT_EQ(Sent(far, callback->getInterfaceHash(&hash)), "16777214: ");
    EXPECT_EQ(hash, "a");
}

}  // namespace
}  // namespace aidl::vendor::zel::hardware::camera::offlinecamera
