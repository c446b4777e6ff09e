// Host only: the mappers that were registered in this process with IMapper::registerAsService().
#pragma once

#include <android/hardware/graphics/mapper/4.0/IMapper.h>

#include <string>

namespace host {

// The registered mapper, or null. Any thread.
::android::sp<::android::hardware::graphics::mapper::V4_0::IMapper> findRegisteredMapper(
        const std::string& serviceName);

// Keeps a reference to `mapper`, in place of an earlier one of that name. Any thread.
void registerMapper(
        const std::string& serviceName,
        const ::android::sp<::android::hardware::graphics::mapper::V4_0::IMapper>& mapper);

// Drops the registered mapper, if any: getService() falls back to the vendor's. Any thread.
void unregisterMapper(const std::string& serviceName = "default");

}  // namespace host
