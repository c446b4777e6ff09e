// The answers that every local HIDL object gives.
#include <android/hidl/base/1.0/IBase.h>
#include <unistd.h>

namespace android {
namespace hidl {
namespace base {
namespace V1_0 {

using ::android::hardware::hidl_death_recipient;
using ::android::hardware::hidl_handle;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hardware::Status;
using ::android::hardware::Void;

const char* IBase::descriptor = "android.hidl.base@1.0::IBase";

Return<void> IBase::ping() {
    return Void();
}

Return<void> IBase::interfaceChain(interfaceChain_cb _hidl_cb) {
    _hidl_cb({descriptor});
    return Void();
}

Return<void> IBase::interfaceDescriptor(interfaceDescriptor_cb _hidl_cb) {
    _hidl_cb(descriptor);
    return Void();
}

Return<void> IBase::notifySyspropsChanged() {
    return Void();
}

Return<bool> IBase::linkToDeath(const sp<hidl_death_recipient>& recipient, uint64_t) {
    return recipient != nullptr;
}

Return<bool> IBase::unlinkToDeath(const sp<hidl_death_recipient>& recipient) {
    return recipient != nullptr;
}

Return<void> IBase::setHALInstrumentation() {
    return Void();
}

Return<void> IBase::getDebugInfo(getDebugInfo_cb _hidl_cb) {
    _hidl_cb({.pid = getpid(), .ptr = 0, .arch = DebugInfo::Architecture::IS_64BIT});
    return Void();
}

Return<void> IBase::debug(const hidl_handle&, const hidl_vec<hidl_string>&) {
    return Void();
}

Return<void> IBase::getHashChain(getHashChain_cb) {
    return Status::fromExceptionCode(Status::EX_UNSUPPORTED_OPERATION,
                                     "a local object has no interface hashes");
}

}  // namespace V1_0
}  // namespace base
}  // namespace hidl
}  // namespace android
