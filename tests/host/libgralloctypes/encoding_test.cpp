// The exact bytes of encoded metadata, and that damaged bytes are refused.
#include <gralloctypes/Gralloc4.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace ::android::gralloc4;
using ::aidl::android::hardware::graphics::common::PlaneLayout;
using ::android::BAD_VALUE;
using ::android::NO_ERROR;
using Bytes = ::android::hardware::hidl_vec<uint8_t>;

// Puts bytes together piece by piece, independently of the code under test.
class HandWritten {
  public:
    template <typename T>
    HandWritten& Number(T value) {
        const auto* first = reinterpret_cast<const uint8_t*>(&value);
        m_bytes.insert(m_bytes.end(), first, first + sizeof(value));
        return *this;
    }
    HandWritten& Text(const std::string& value) {
        Number<int64_t>(static_cast<int64_t>(value.size()));
        m_bytes.insert(m_bytes.end(), value.begin(), value.end());
        return *this;
    }
    HandWritten& Header(int64_t type) {
        return Text("android.hardware.graphics.common.StandardMetadataType").Number(type);
    }
    operator Bytes() const { return m_bytes; }

  private:
    std::vector<uint8_t> m_bytes;
};

TEST(Gralloc4, PlaneLayouts) {
    const std::string component = "android.hardware.graphics.common.PlaneLayoutComponentType";
    const std::vector<int64_t> numbers = {640 * 512, 16, 640, 320, 240, 640 * 256, 2, 3};
    const auto written = [&](int64_t planes, int64_t components) {
        HandWritten bytes;
        bytes.Header(15).Number(planes).Number(components);
        bytes.Text(component).Number<int64_t>(2).Number<int64_t>(0).Number<int64_t>(8);
        bytes.Text(component).Number<int64_t>(4).Number<int64_t>(8).Number<int64_t>(8);
        for (const int64_t number : numbers) bytes.Number(number);
        return Bytes(bytes);
    };
    std::vector<PlaneLayout> planes;
    ASSERT_EQ(decodePlaneLayouts(written(1, 2), &planes), NO_ERROR);
    const auto& [components, offset, increment, stride, width, height, size, across, down] =
            planes.at(0);
    EXPECT_EQ(components.at(0).sizeInBits, 8);
    EXPECT_EQ(numbers, std::vector({offset, increment, stride, width, height, size, across, down}));
    Bytes bytes;
    EXPECT_EQ(encodePlaneLayouts(planes, &bytes), NO_ERROR);
    EXPECT_EQ(bytes, written(1, 2));

    // Counts that cannot be true: refused before anything is allocated for them.
    for (const int64_t count : {int64_t{-1}, INT64_MAX, int64_t{3}}) {
        EXPECT_EQ(decodePlaneLayouts(written(count, 2), &planes), BAD_VALUE) << count;
        EXPECT_EQ(decodePlaneLayouts(written(1, count), &planes), BAD_VALUE) << count;
    }
    EXPECT_EQ(planes.size(), 1u) << "an error writes nothing";
}

TEST(Gralloc4, OtherTypesAndLengthsAreRefused) {
    const Bytes width = HandWritten().Header(3).Number<uint64_t>(640);
    uint64_t value = 1;
    EXPECT_EQ(decodeHeight(width, &value), BAD_VALUE);
    EXPECT_EQ(decodeWidth(HandWritten().Text("vendor").Number<int64_t>(3), &value), BAD_VALUE);
    for (const size_t size : {size_t{0}, size_t{60}, width.size() - 1}) {
        Bytes cut = width;
        cut.resize(size);
        EXPECT_EQ(decodeWidth(cut, &value), BAD_VALUE) << size;
    }
    EXPECT_EQ(value, 1u);
    Bytes longer = width;
    longer.resize(width.size() + 1);
    EXPECT_EQ(decodeWidth(longer, &value), BAD_VALUE);
    EXPECT_EQ(value, 640u) << "bytes that are left over do not hide the value";
}

}  // namespace
