// A mapper library that does nothing. Its build says which versions it has, and what its loader
// answers.

#include <android/hardware/graphics/mapper/IMapper.h>

#include <cstdint>

#ifdef LIBRARY_VERSION
extern "C" const uint32_t ANDROID_HAL_MAPPER_VERSION;
extern "C" const uint32_t ANDROID_HAL_MAPPER_VERSION = LIBRARY_VERSION;
#endif

#ifdef LOADER
extern "C" AIMapper_Error AIMapper_loadIMapper(AIMapper** outImplementation) {
    static AIMapper table{};
    table.version = static_cast<AIMapper_Version>(TABLE_VERSION);
    *outImplementation = &table;  // also together with an error
    return static_cast<AIMapper_Error>(LOADER);
}
#endif
