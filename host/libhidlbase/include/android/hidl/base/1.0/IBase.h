// IBase: the root of every HIDL interface.
#pragma once

#include <hidl/HidlSupport.h>

namespace android::hidl::base::V1_0 {

// Objects are local here: there is no process to ping, to watch or to ask for its descriptors.
struct IBase : virtual public ::android::RefBase {
    virtual bool isRemote() const { return false; }
};

}  // namespace android::hidl::base::V1_0
