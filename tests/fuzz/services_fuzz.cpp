// Arbitrary transactions to local objects of the three vendor interfaces and the allocator.
#include <android/binder_auto_utils.h>

#include "fuzz_parcel.h"
#include "host/services/graphicsallocator/allocator.h"
#include "host/services/offlinecamera/service.h"
#include "tests/host/services/offlinecamera/quiet_client.h"

namespace {

using namespace ::aidl::vendor::zel::hardware::camera::offlinecamera;

constexpr size_t kMaxCalls = 8;

// One call; its code is counted from the first one, or, from 128 on, from the last one.
void transact(AIBinder* target, FuzzInput* input, const std::vector<AIBinder*>& binders) {
    const auto code = input->take<uint8_t>();
    const binder_flags_t flags = input->take<uint8_t>() % 2 == 0 ? 0 : FLAG_ONEWAY;
    const std::string content = input->bytes(input->take<uint16_t>());
    AParcel body;
    fillParcel(&body, {reinterpret_cast<const uint8_t*>(content.data()), content.size()}, binders);
    AParcel* request = nullptr;
    require(AIBinder_prepareTransaction(target, &request) == STATUS_OK);
    require(AParcel_appendFrom(&body, request, 0, AParcel_getDataSize(&body)) == STATUS_OK);
    AParcel* answer = nullptr;
    AIBinder_transact(
            target,
            code < 128 ? FIRST_CALL_TRANSACTION + code : LAST_CALL_TRANSACTION - (255u - code),
            &request, &answer, flags);
    AParcel_delete(answer);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const auto* const mapper = new ::android::sp<offlinecamera::ImportedBuffer::IMapper>(
            offlinecamera::ImportedBuffer::IMapper::getService());
    require(*mapper != nullptr);
    const auto service = ndk::SharedRefBase::make<offlinecamera::OfflineCameraService>(
            *mapper, offlinecamera::FaultInjector());
    const auto client = ndk::SharedRefBase::make<offlinecamera::QuietClient>();
    const auto allocator = ndk::SharedRefBase::make<graphics::Allocator>();
    std::shared_ptr<IOfflineCameraSession> session;
    require(service->openOfflineSession("fuzz", client, &session).isOk());
    const ndk::SpAIBinder objects[] = {session->asBinder(), service->asBinder(), client->asBinder(),
                                       allocator->asBinder()};
    std::vector<AIBinder*> binders;
    for (const auto& object : objects) binders.push_back(object.get());
    binders.push_back(nullptr);

    FuzzInput input(data, size);
    for (size_t call = 0; call < kMaxCalls && input.left() > 0; ++call) {
        transact(objects[input.take<uint8_t>() % 4].get(), &input, binders);
    }
    session->closeOfflineSession();  // refused if the input has closed it
    requireNoDescriptorLeak();
    return 0;
}
