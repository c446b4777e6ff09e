// The mapper 4.0 library, found by name as its clients find it.
#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <gralloctypes/Gralloc4.h>
#include <gtest/gtest.h>

#include "tests/host/graphics/buffers.h"

namespace graphics {
namespace {

using ::android::sp;
using ::android::gralloc4::MetadataType_Width;
using ::android::hardware::hidl_handle;
using ::android::hardware::graphics::mapper::V4_0::Error;
using ::android::hardware::graphics::mapper::V4_0::IMapper;

constexpr uint64_t kRead = 3;

class HidlMapperTest : public testing::Test {
  protected:
    void Import(const native_handle_t* raw) {
        m_mapper->importBuffer(hidl_handle(raw), [&](Error error, void* buffer) {
            m_error = error;
            m_buffer = buffer;
        });
    }

    Error Lock(const IMapper::Rect& region, const native_handle_t* fence) {
        m_mapper->lock(m_buffer, kRead, region, hidl_handle(fence), [&](Error error, void* data) {
            m_error = error;
            EXPECT_EQ(error == Error::NONE, data != nullptr);
        });
        return m_error;
    }

    Error Unlock() {
        m_mapper->unlock(m_buffer, [&](Error error, const hidl_handle&) { m_error = error; });
        return m_error;
    }

    Error Get(const IMapper::MetadataType& type) {
        m_mapper->get(m_buffer, type, [&](Error error, const auto&) { m_error = error; });
        return m_error;
    }

    const sp<IMapper> m_mapper = IMapper::getService();
    const UniqueHandle m_raw = CreateNv12();
    Error m_error = Error::NO_RESOURCES;
    void* m_buffer = nullptr;
};

TEST_F(HidlMapperTest, OperationsReachTheBufferAndTellErrors) {
    Import(nullptr);
    EXPECT_EQ(m_error, Error::BAD_BUFFER);
    EXPECT_EQ(Get(MetadataType_Width), Error::BAD_BUFFER);
    Import(m_raw.get());
    EXPECT_EQ(m_error, Error::NONE);
    EXPECT_EQ(Get(MetadataType_Width), Error::NONE);
    EXPECT_EQ(Get({"vendor.Type", 3}), Error::UNSUPPORTED);
    EXPECT_EQ(Lock({600, 400, 40, 80}, nullptr), Error::NONE);
    // Every mapper of this library knows the buffer.
    EXPECT_EQ(IMapper::getService()->rereadLockedBuffer(m_buffer).withDefault(Error::BAD_BUFFER),
              Error::NONE);
    EXPECT_EQ(Unlock(), Error::NONE);
    EXPECT_EQ(Unlock(), Error::BAD_BUFFER);
    native_handle_t* two = native_handle_create(2, 0);
    two->data[0] = two->data[1] = 0;
    EXPECT_EQ(Lock({}, two), Error::BAD_VALUE) << "a fence is one descriptor";
    native_handle_delete(two);
    EXPECT_EQ(m_mapper->freeBuffer(m_buffer).withDefault(Error::BAD_VALUE), Error::NONE);
    m_mapper->createDescriptor({}, [&](Error error, const auto&) { m_error = error; });
    EXPECT_EQ(m_error, Error::BAD_VALUE) << "of no size";
}

}  // namespace
}  // namespace graphics
