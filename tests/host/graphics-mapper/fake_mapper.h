// A mapper that supports nothing; freeBuffer() answers with a number that tells fakes apart.
#pragma once

#include <android/hardware/graphics/mapper/4.0/IMapper.h>

namespace fake {

using ::android::hardware::hidl_handle;
using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hardware::Void;
using ::android::hardware::graphics::mapper::V4_0::Error;
using ::android::hardware::graphics::mapper::V4_0::IMapper;

class FakeMapper : public IMapper {
  public:
    explicit FakeMapper(Error mark) : m_mark(mark) {}

    Return<Error> freeBuffer(void*) override { return m_mark; }

  private:
    const Error m_mark;
};

}  // namespace fake
