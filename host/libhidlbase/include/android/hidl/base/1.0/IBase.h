// IBase: the root of every HIDL interface.
#pragma once

#include <hidl/HidlSupport.h>

#include <functional>

namespace android {
namespace hidl {
namespace base {
namespace V1_0 {

struct DebugInfo final {
    enum class Architecture : int32_t {
        UNKNOWN = 0,
        IS_64BIT = 1,
        IS_32BIT = 2,
    };

    int32_t pid;
    uint64_t ptr;
    Architecture arch;
};

// Implementations in this process inherit answers that fit a local object. Callbacks are called
// before the method returns.
struct IBase : virtual public ::android::RefBase {
    static const char* descriptor;

    virtual bool isRemote() const { return false; }

    using interfaceChain_cb = std::function<void(
            const ::android::hardware::hidl_vec<::android::hardware::hidl_string>& descriptors)>;
    using interfaceDescriptor_cb =
            std::function<void(const ::android::hardware::hidl_string& descriptor)>;
    using getDebugInfo_cb = std::function<void(const DebugInfo& info)>;
    using getHashChain_cb =
            std::function<void(const ::android::hardware::hidl_vec<
                               ::android::hardware::hidl_array<uint8_t, 32>>& hashChain)>;

    virtual ::android::hardware::Return<void> ping();
    virtual ::android::hardware::Return<void> interfaceChain(interfaceChain_cb _hidl_cb);
    virtual ::android::hardware::Return<void> interfaceDescriptor(interfaceDescriptor_cb _hidl_cb);
    virtual ::android::hardware::Return<void> notifySyspropsChanged();
    virtual ::android::hardware::Return<bool> linkToDeath(
            const ::android::sp<::android::hardware::hidl_death_recipient>& recipient,
            uint64_t cookie);
    virtual ::android::hardware::Return<bool> unlinkToDeath(
            const ::android::sp<::android::hardware::hidl_death_recipient>& recipient);
    virtual ::android::hardware::Return<void> setHALInstrumentation();
    virtual ::android::hardware::Return<void> getDebugInfo(getDebugInfo_cb _hidl_cb);
    virtual ::android::hardware::Return<void> debug(
            const ::android::hardware::hidl_handle& fd,
            const ::android::hardware::hidl_vec<::android::hardware::hidl_string>& options);
    // Not supported by local objects: the answer is EX_UNSUPPORTED_OPERATION.
    virtual ::android::hardware::Return<void> getHashChain(getHashChain_cb _hidl_cb);
};

}  // namespace V1_0
}  // namespace base
}  // namespace hidl
}  // namespace android
