// The stable-C mapper, loaded by name as its clients load it.
#include <android/hardware/graphics/mapper/IMapper.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <gralloctypes/Gralloc4.h>
#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <vndksupport/linker.h>

#include <cstring>
#include <vector>

#include "tests/host/graphics-core/buffers.h"

namespace graphics {
namespace {

constexpr uint64_t kRead = 3;
constexpr int64_t kAllocationSize = 10;

// Nobody may pass null; a mapper that is given it must say so nevertheless.
buffer_handle_t nullHandle() {
    return nullptr;
}

class StableMapperTest : public testing::Test {
  protected:
    void SetUp() override {
        void* library = android_load_sphal_library("mapper.zel.so", RTLD_NOW);
        ASSERT_NE(library, nullptr) << "STANDIN_HAL_PATH must name the folder of the library";
        const auto* version =
                static_cast<const uint32_t*>(dlsym(library, "ANDROID_HAL_MAPPER_VERSION"));
        ASSERT_NE(version, nullptr);
        EXPECT_EQ(*version, 5u);
        const auto load = reinterpret_cast<AIMapper_Error (*)(AIMapper**)>(
                dlsym(library, "AIMapper_loadIMapper"));
        ASSERT_NE(load, nullptr);
        AIMapper* mapper = nullptr;
        ASSERT_EQ(load(&mapper), AIMAPPER_ERROR_NONE);
        ASSERT_EQ(mapper->version, AIMAPPER_VERSION_5);
        mMapper = &mapper->v5;

        mRaw = createNv12();
        ASSERT_EQ(mMapper->importBuffer(mRaw.get(), &mBuffer), AIMAPPER_ERROR_NONE);
        ASSERT_NE(mBuffer, mRaw.get());
    }

    void TearDown() override {
        if (mBuffer != nullptr) EXPECT_EQ(mMapper->freeBuffer(mBuffer), AIMAPPER_ERROR_NONE);
    }

    AIMapperV5* mMapper = nullptr;
    UniqueHandle mRaw;
    buffer_handle_t mBuffer = nullptr;
};

TEST_F(StableMapperTest, LocksAndUnlocks) {
    void* data = nullptr;
    int fence = 4711;
    EXPECT_EQ(mMapper->unlock(mBuffer, &fence), AIMAPPER_ERROR_BAD_BUFFER);
    EXPECT_EQ(mMapper->lock(mBuffer, kRead, {0, 0, 640, 480}, -1, &data), AIMAPPER_ERROR_NONE);
    std::memset(data, 7, 491'520);
    EXPECT_EQ(mMapper->flushLockedBuffer(mBuffer), AIMAPPER_ERROR_NONE);
    EXPECT_EQ(mMapper->rereadLockedBuffer(mBuffer), AIMAPPER_ERROR_NONE);
    EXPECT_EQ(mMapper->unlock(mBuffer, &fence), AIMAPPER_ERROR_NONE);
    EXPECT_EQ(fence, -1);
    EXPECT_EQ(mMapper->flushLockedBuffer(mBuffer), AIMAPPER_ERROR_BAD_BUFFER);
}

TEST_F(StableMapperTest, LockTakesItsFenceWhateverItReturns) {
    const int descriptors = countOpenDescriptors();
    void* data = nullptr;
    const ARect whole = {0, 0, 0, 0};
    EXPECT_EQ(mMapper->lock(mBuffer, kRead, whole, eventfd(1, EFD_CLOEXEC), &data),
              AIMAPPER_ERROR_NONE);
    EXPECT_EQ(mMapper->lock(mBuffer, 0, whole, eventfd(0, EFD_CLOEXEC), &data),
              AIMAPPER_ERROR_BAD_VALUE);
    EXPECT_EQ(mMapper->lock(nullHandle(), kRead, whole, eventfd(0, EFD_CLOEXEC), &data),
              AIMAPPER_ERROR_BAD_BUFFER);
    EXPECT_EQ(countOpenDescriptors(), descriptors);
}

TEST_F(StableMapperTest, TellsTheSizeOfMetadataOrANegativeErrorAndCopiesWhatFits) {
    std::vector<uint8_t> bytes(77, 0xee);
    EXPECT_EQ(mMapper->getStandardMetadata(mBuffer, kAllocationSize, nullptr, 0), 77);
    EXPECT_EQ(mMapper->getStandardMetadata(mBuffer, kAllocationSize, bytes.data(), 76), 77);
    EXPECT_EQ(bytes, std::vector<uint8_t>(77, 0xee));
    EXPECT_EQ(mMapper->getStandardMetadata(mBuffer, kAllocationSize, bytes.data(), 77), 77);
    uint64_t size = 0;
    EXPECT_EQ(::android::gralloc4::decodeAllocationSize(bytes, &size), ::android::NO_ERROR);
    EXPECT_EQ(size, 491'520u);

    EXPECT_EQ(mMapper->getMetadata(mBuffer, {GRALLOC4_STANDARD_METADATA_TYPE, kAllocationSize},
                                   nullptr, 0),
              77);
    EXPECT_EQ(mMapper->getStandardMetadata(mBuffer, 19, nullptr, 0), -AIMAPPER_ERROR_UNSUPPORTED);
    EXPECT_EQ(mMapper->getMetadata(mBuffer, {"vendor.Type", 3}, nullptr, 0),
              -AIMAPPER_ERROR_UNSUPPORTED);
    EXPECT_EQ(mMapper->getStandardMetadata(mRaw.get(), 3, nullptr, 0), -AIMAPPER_ERROR_BAD_BUFFER);
}

TEST_F(StableMapperTest, DumpsWhatItLists) {
    const AIMapper_MetadataTypeDescription* list = nullptr;
    size_t listed = 0;
    ASSERT_EQ(mMapper->listSupportedMetadataTypes(&list, &listed), AIMAPPER_ERROR_NONE);
    ASSERT_GE(listed, 18u);
    EXPECT_STREQ(list[0].metadataType.name, GRALLOC4_STANDARD_METADATA_TYPE);

    size_t calls[2] = {};  // buffers, entries
    const auto begin = [](void* context) { ++static_cast<size_t*>(context)[0]; };
    const auto entry = [](void* context, AIMapper_MetadataType, const void*, size_t size) {
        EXPECT_GE(size, 69u);
        ++static_cast<size_t*>(context)[1];
    };
    EXPECT_EQ(mMapper->dumpAllBuffers(begin, entry, calls), AIMAPPER_ERROR_NONE);
    EXPECT_EQ(calls[0], 1u);
    EXPECT_EQ(calls[1], listed);
}

}  // namespace
}  // namespace graphics
