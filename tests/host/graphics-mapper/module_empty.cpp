// An implementation library that has no mapper.
#include <android/hardware/graphics/mapper/4.0/IMapper.h>

extern "C" android::hardware::graphics::mapper::V4_0::IMapper* HIDL_FETCH_IMapper(const char*) {
    return nullptr;
}
