// The stable-C mapper, loaded by name as its clients load it: it opens, and supports nothing.
#include <android/hardware/graphics/mapper/IMapper.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <vndksupport/linker.h>

#include <cstddef>

#include "tests/host/libhidlbase/open_descriptors.h"

namespace {

// A library and its caller may be built apart.
static_assert(alignof(AIMapper) == 16 && sizeof(AIMapper) == 128 && offsetof(AIMapper, v5) == 8);
static_assert(offsetof(AIMapperV5, getReservedRegion) == 14 * sizeof(void*));

TEST(StableMapper, OpensAndAnswersUnsupported) {
    void* library = android_load_sphal_library("mapper.zel.so", RTLD_NOW);
    ASSERT_NE(library, nullptr);
    const void* version = dlsym(library, "ANDROID_HAL_MAPPER_VERSION");
    ASSERT_NE(version, nullptr);
    EXPECT_EQ(*static_cast<const uint32_t*>(version), 5u);
    const auto load = reinterpret_cast<AIMapper_Error (*)(AIMapper**)>(
            dlsym(library, "AIMapper_loadIMapper"));
    ASSERT_NE(load, nullptr);
    AIMapper* mapper = nullptr;
    ASSERT_EQ(load(&mapper), AIMAPPER_ERROR_NONE);
    ASSERT_EQ(mapper->version, AIMAPPER_VERSION_5);

    const int descriptors = countOpenDescriptors();
    native_handle_t handle = {};
    void* data = nullptr;
    EXPECT_EQ(mapper->v5.lock(&handle, 3, {}, eventfd(0, EFD_CLOEXEC), &data),
              AIMAPPER_ERROR_UNSUPPORTED);
    EXPECT_EQ(countOpenDescriptors(), descriptors) << "lock owns its fence whatever it answers";
    EXPECT_EQ(mapper->v5.freeBuffer(&handle), AIMAPPER_ERROR_UNSUPPORTED);
    EXPECT_EQ(mapper->v5.getStandardMetadata(&handle, 3, nullptr, 0), -AIMAPPER_ERROR_UNSUPPORTED);
}

}  // namespace
