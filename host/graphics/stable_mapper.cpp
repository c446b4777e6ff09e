// The stable-C mapper: clients open it and ask for its version, but call none of its functions.
#include <android/hardware/graphics/mapper/IMapper.h>
#include <android/log.h>
#include <unistd.h>

namespace {

AIMapper_Error Refuse() {
    __android_log_write(ANDROID_LOG_ERROR, "GraphicsMapper",
                        "the stable-C mapper has no working function here: use mapper 4.0");
    return AIMAPPER_ERROR_UNSUPPORTED;
}

// Any function of the table.
template <typename Answer, typename... Arguments>
Answer Unsupported(Arguments...) {
    return Refuse();
}

// As above, but takes ownership of the fence as every lock does.
AIMapper_Error RefuseLock(buffer_handle_t, uint64_t, ARect, int acquireFence, void**) {
    if (acquireFence >= 0) close(acquireFence);
    return Refuse();
}

// The size of metadata or a negative error.
template <typename... Arguments>
int32_t UnsupportedMetadata(Arguments...) {
    return -Refuse();
}

AIMapper gMapper = {
        .version = AIMAPPER_VERSION_5,
        .v5 = {Unsupported, Unsupported, Unsupported, RefuseLock, Unsupported, Unsupported,
               Unsupported, UnsupportedMetadata, UnsupportedMetadata, Unsupported, Unsupported,
               Unsupported, Unsupported, Unsupported, Unsupported},
};

}  // namespace

extern "C" {

extern const uint32_t ANDROID_HAL_MAPPER_VERSION;
__attribute__((visibility("default"))) const uint32_t ANDROID_HAL_MAPPER_VERSION =
        AIMAPPER_VERSION_5;

__attribute__((visibility("default"))) AIMapper_Error AIMapper_loadIMapper(
        AIMapper** outImplementation) {
    *outImplementation = &gMapper;
    return AIMAPPER_ERROR_NONE;
}

}  // extern "C"
