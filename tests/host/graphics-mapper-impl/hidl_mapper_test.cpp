// The mapper 4.0 library, found by name as its clients find it.
#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <gralloctypes/Gralloc4.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>

#include "tests/host/graphics-core/buffers.h"

namespace graphics {
namespace {

namespace gralloc4 = ::android::gralloc4;
using ::android::sp;
using ::android::hardware::hidl_handle;
using ::android::hardware::hidl_vec;
using ::android::hardware::graphics::mapper::V4_0::Error;
using ::android::hardware::graphics::mapper::V4_0::IMapper;
using HidlFormat = ::android::hardware::graphics::common::V1_2::PixelFormat;

constexpr uint64_t kRead = 3;

class HidlMapperTest : public testing::Test {
  protected:
    void SetUp() override {
        mMapper = IMapper::getService();
        ASSERT_NE(mMapper, nullptr) << "STANDIN_HAL_PATH must name the folder of the library";
        mRaw = createNv12();
    }

    void TearDown() override {
        if (mBuffer != nullptr) EXPECT_EQ(free(mBuffer), Error::NONE);
    }

    Error import(const native_handle_t* raw) {
        Error result = Error::NO_RESOURCES;
        mMapper->importBuffer(hidl_handle(raw), [&](Error error, void* buffer) {
            result = error;
            mBuffer = buffer;
        });
        return result;
    }

    Error free(void* buffer) { return mMapper->freeBuffer(buffer); }

    Error lock(void* buffer, uint64_t usage, const IMapper::Rect& region,
               const native_handle_t* fence = nullptr) {
        Error result = Error::NO_RESOURCES;
        mMapper->lock(buffer, usage, region, hidl_handle(fence), [&](Error error, void* data) {
            result = error;
            mData = static_cast<uint8_t*>(data);
        });
        EXPECT_EQ(result == Error::NONE, mData != nullptr);
        return result;
    }

    Error unlock(void* buffer) {
        Error result = Error::NO_RESOURCES;
        mMapper->unlock(buffer, [&](Error error, const hidl_handle& fence) {
            result = error;
            EXPECT_EQ(fence.getNativeHandle(), nullptr);
        });
        return result;
    }

    static IMapper::BufferDescriptorInfo nv12Info() {
        IMapper::BufferDescriptorInfo info{};
        info.width = 640;
        info.height = 480;
        info.layerCount = 1;
        info.format = HidlFormat::YCBCR_420_888;
        info.usage = kRead;
        return info;
    }

    sp<IMapper> mMapper;
    UniqueHandle mRaw;
    void* mBuffer = nullptr;
    uint8_t* mData = nullptr;
};

TEST_F(HidlMapperTest, BufferLivesFromImportToFree) {
    const int descriptors = countOpenDescriptors();
    EXPECT_EQ(import(nullptr), Error::BAD_BUFFER);
    ASSERT_EQ(import(mRaw.get()), Error::NONE);
    EXPECT_NE(mBuffer, mRaw.get());
    ASSERT_EQ(lock(mBuffer, kRead, {}), Error::NONE);
    std::memset(mData, 7, 491'520);
    EXPECT_EQ(mData[2 * 491'520 - 1], 0) << "the tail must be readable";
    EXPECT_EQ(unlock(mBuffer), Error::NONE);
    EXPECT_EQ(unlock(mBuffer), Error::BAD_BUFFER);

    ASSERT_EQ(lock(mBuffer, kRead, {}), Error::NONE);
    // Every mapper of this library knows the buffer.
    EXPECT_EQ(IMapper::getService()->rereadLockedBuffer(mBuffer).withDefault(Error::BAD_BUFFER),
              Error::NONE);
    EXPECT_EQ(free(mBuffer), Error::NONE);
    EXPECT_EQ(free(mBuffer), Error::BAD_BUFFER);
    mBuffer = nullptr;
    EXPECT_EQ(countOpenDescriptors(), descriptors);
    EXPECT_EQ(bufferMappings(), 0);
    char byte = 0;
    EXPECT_EQ(pread(mRaw->data[0], &byte, 1, 491'519), 1);
    EXPECT_EQ(byte, 7);
}

TEST_F(HidlMapperTest, LockRefusesBadArguments) {
    ASSERT_EQ(import(mRaw.get()), Error::NONE);
    EXPECT_EQ(lock(nullptr, kRead, {}), Error::BAD_BUFFER);
    EXPECT_EQ(lock(mRaw.get(), kRead, {}), Error::BAD_BUFFER) << "raw handles are not locked";
    EXPECT_EQ(lock(mBuffer, 0, {}), Error::BAD_VALUE);
    constexpr int32_t kLargest = 0x7fffffff;
    for (const IMapper::Rect& region :
         {IMapper::Rect{0, 0, 640, 481}, IMapper::Rect{1, 0, 640, 480}, IMapper::Rect{5, 5, 0, 0},
          IMapper::Rect{0, 0, 640, 0}, IMapper::Rect{10, 10, -5, -5},
          IMapper::Rect{kLargest, kLargest, kLargest, kLargest},
          // Right and bottom edge are zero: not the whole buffer.
          IMapper::Rect{-640, -480, 640, 480}}) {
        EXPECT_EQ(lock(mBuffer, kRead, region), Error::BAD_VALUE);
    }
    EXPECT_EQ(lock(mBuffer, kRead, {600, 400, 40, 80}), Error::NONE);
    native_handle_t* two = native_handle_create(2, 0);
    two->data[0] = two->data[1] = 0;
    EXPECT_EQ(lock(mBuffer, kRead, {}, two), Error::BAD_VALUE) << "a fence is one descriptor";
    native_handle_delete(two);
}

TEST_F(HidlMapperTest, ValidatesAgainstThePictureNotOnlyTheAllocation) {
    ASSERT_EQ(import(mRaw.get()), Error::NONE);
    const auto validate = [&](const IMapper::BufferDescriptorInfo& info, uint32_t stride) {
        return mMapper->validateBufferSize(mBuffer, info, stride).withDefault(Error::NO_RESOURCES);
    };
    IMapper::BufferDescriptorInfo larger = nv12Info();
    larger.height = 481;  // would fit the allocation
    EXPECT_EQ(validate(nv12Info(), 640), Error::NONE);
    EXPECT_EQ(validate(nv12Info(), 641), Error::BAD_VALUE);
    EXPECT_EQ(validate(larger, 640), Error::BAD_VALUE);
}

TEST_F(HidlMapperTest, DescriptorHoldsTheDescription) {
    Error result = Error::NO_RESOURCES;
    hidl_vec<uint8_t> bytes;
    const auto create = [&](const IMapper::BufferDescriptorInfo& info) {
        mMapper->createDescriptor(info, [&](Error error, const hidl_vec<uint8_t>& descriptor) {
            result = error;
            bytes = descriptor;
        });
        return result;
    };
    EXPECT_EQ(create(nv12Info()), Error::NONE);
    hidl_vec<uint8_t> expected;
    ASSERT_EQ(gralloc4::encodeBufferDescriptorInfo(nv12Info(), &expected), ::android::NO_ERROR);
    EXPECT_EQ(bytes, expected);

    IMapper::BufferDescriptorInfo empty = nv12Info();
    empty.height = 0;
    EXPECT_EQ(create(empty), Error::BAD_VALUE);
    EXPECT_EQ(bytes.size(), 0u);
}

TEST_F(HidlMapperTest, MetadataOfBuffersAndOfDescriptions) {
    ASSERT_EQ(import(mRaw.get()), Error::NONE);
    uint64_t size = 0;
    const auto decode = [&](Error error, const hidl_vec<uint8_t>& bytes) {
        EXPECT_EQ(error, Error::NONE);
        EXPECT_EQ(gralloc4::decodeAllocationSize(bytes, &size), ::android::NO_ERROR);
    };
    mMapper->get(mBuffer, gralloc4::MetadataType_AllocationSize, decode);
    EXPECT_EQ(size, 491'520u);
    size = 0;
    mMapper->getFromBufferDescriptorInfo(nv12Info(), gralloc4::MetadataType_AllocationSize, decode);
    EXPECT_EQ(size, 491'520u);

    const auto getError = [&](void* buffer, const IMapper::MetadataType& type) {
        Error result = Error::NONE;
        mMapper->get(buffer, type, [&](Error error, const hidl_vec<uint8_t>&) { result = error; });
        return result;
    };
    EXPECT_EQ(getError(mBuffer, gralloc4::MetadataType_Smpte2086), Error::UNSUPPORTED);
    EXPECT_EQ(getError(mRaw.get(), gralloc4::MetadataType_Width), Error::BAD_BUFFER);
}

}  // namespace
}  // namespace graphics
