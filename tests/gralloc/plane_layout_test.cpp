// The plane-layout query: its gates, its lines, and which plane gives the scan lines.

#include <gmock/gmock.h>

#include <csignal>
#include <initializer_list>

#include "gralloc/offlinecamerazelinterface.h"
#include "tests/support/fake_display_mapper.h"
#include "tests/support/log_capture.h"
#include "tests/support/memory_mapper.h"

using namespace ::vendor::zel::hardware::camera::offlinecamera::implementation;
using ::aidl::android::hardware::graphics::common::BufferUsage;
using ::aidl::android::hardware::graphics::common::PixelFormat;
using ::testing::_;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace test {
namespace {

constexpr uint32_t kY = 1;
constexpr uint32_t kCb = 2;
constexpr uint32_t kCr = 4;
constexpr uint32_t kRaw = 0x100000;

::mapper::PlaneEntry Plane(std::initializer_list<uint32_t> components, int32_t scanlines) {
    ::mapper::PlaneEntry plane{};
    for (const uint32_t type : components) plane.components[plane.numComponents++].type = type;
    plane.scanlines = scanlines;
    plane.sampleIncrementBits = 8;
    plane.strideBytes = 4096;
    return plane;
}

class PlaneLayout : public ::testing::Test {
  public:
    PlaneLayout() {
        record.m_planeLayoutInterface = new MemoryMapper(&calls);
        record.m_aiMapper = reinterpret_cast<AIMapper*>(&calls);  // only looked at
        TheDisplayMapper() = {{Plane({kY}, 3072)}, 0, {}};
    }

    // The scan lines after the query, with -7 before it.
    int32_t Query(int format = 35) {
        int32_t scanlines = -7;
        record.GetPlaneLayout(static_cast<PixelFormat>(format), BufferUsage::CPU_READ_OFTEN, 4000,
                              3000, &scanlines);
        return scanlines;
    }

    LogCapture log;
    Calls calls;
    OfflineCameraZelInterface record;
    std::vector<::mapper::PlaneEntry>& planes = TheDisplayMapper().planes;
};

TEST_F(PlaneLayout, EndsAtOnceWithoutTheFirstInterface) {
    record.m_planeLayoutInterface = nullptr;
    EXPECT_EQ(Query(), -7);
    EXPECT_EQ(Query(34), -7);
    EXPECT_THAT(TheDisplayMapper().asked, IsEmpty());
    EXPECT_THAT(log.Take(), IsEmpty());
}

TEST_F(PlaneLayout, AsksForFormats35To38) {
    EXPECT_EQ(Query(34), -7);
    EXPECT_EQ(Query(39), -7);
    EXPECT_THAT(TheDisplayMapper().asked, IsEmpty());
    EXPECT_THAT(log.Take(), ElementsAre("I format 34 dont fetch plane layout info",
                                        "I format 39 dont fetch plane layout info"));
    for (int format = 35; format <= 38; ++format) EXPECT_EQ(Query(format), 3072);
}

TEST_F(PlaneLayout, EndsQuietlyWithoutMapperAndOnAnError) {
    TheDisplayMapper().error = 5;
    EXPECT_EQ(Query(), -7);
    record.m_aiMapper = nullptr;
    EXPECT_EQ(Query(), -7);
    EXPECT_THAT(TheDisplayMapper().asked, SizeIs(1));
    EXPECT_THAT(log.Take(), IsEmpty());
    EXPECT_EQ(Query(34), -7);  // the format is looked at before the mapper
    EXPECT_THAT(log.Take(), ElementsAre("I format 34 dont fetch plane layout info"));
}

TEST_F(PlaneLayout, DescribesTheBufferAndLogsItsPlanes) {
    planes = {Plane({kY}, 3072), Plane({kCb, kCr}, 1536)};
    planes[0].size = 4096 * 3072;
    planes[0].horizontalSubsampling = planes[0].verticalSubsampling = 1;
    planes[1].sampleIncrementBits = 16;
    planes[1].offset = 4096 * 3072;
    planes[1].size = 4096 * 1536;
    planes[1].horizontalSubsampling = 4;
    planes[1].verticalSubsampling = 2;
    EXPECT_EQ(Query(), 3072);
    const auto& asked = TheDisplayMapper().asked.at(0);
    EXPECT_THAT(asked.name, Each(0));
    EXPECT_EQ(asked.width, 4000);
    EXPECT_EQ(asked.height, 3000);
    EXPECT_EQ(asked.layerCount, 1);
    EXPECT_EQ(asked.format, PixelFormat::YCBCR_420_888);
    EXPECT_EQ(asked.usage, BufferUsage::CPU_READ_OFTEN);
    EXPECT_EQ(asked.reservedSize, 0);
    EXPECT_THAT(asked.additionalOptions, IsEmpty());
    EXPECT_THAT(
            log.Take(),
            ElementsAre(
                    "I GetPlaneLayout: Number of planes - 2 gralloc format 35",
                    "I GetPlaneLayout: plane info: component - 1",
                    "I h_subsampling - 1, v_subsampling - 1, offset - 0, pixel_increment/step - 1",
                    "I stride_pixel - 4096, stride_bytes - 4096, scanlines - 3072, size - 12582912",
                    "I GetPlaneLayout: plane info: component - 6",
                    "I h_subsampling - 4, v_subsampling - 2, offset - 12582912, "
                    "pixel_increment/step - 2",
                    "I stride_pixel - 2048, stride_bytes - 4096, scanlines - 1536, size - "
                    "6291456"));
}

// In single precision, rounded down.
TEST_F(PlaneLayout, LogsTheStrideInSamples) {
    const struct {
        int32_t sampleBits, strideBytes;
        const char* logged;
    } cases[] = {{10, 5121, "stride_pixel - 4096, stride_bytes - 5121,"},
                 {8, (1 << 24) + 1, "stride_pixel - 16777216, stride_bytes - 16777217,"},
                 // Beyond the type's range; %d shows its largest value as -1.
                 {0, 4096, "stride_pixel - -1, stride_bytes - 4096,"},
                 {8, -4096, "stride_pixel - 0, stride_bytes - -4096,"}};
    for (const auto& layout : cases) {
        planes[0].sampleIncrementBits = layout.sampleBits;
        planes[0].strideBytes = layout.strideBytes;
        Query();
        EXPECT_THAT(log.Take(),
                    ElementsAre(_, _, HasSubstr(layout.sampleBits < 8 ? "step - 0" : "step - 1"),
                                HasSubstr(layout.logged)));
    }
}

TEST_F(PlaneLayout, TakesTheLastPlaneOfLumaOrRawAlone) {
    planes = {Plane({kY, kCb}, 10), Plane({}, 11), Plane({kRaw, kY}, 12)};
    EXPECT_EQ(Query(), -7);
    planes = {Plane({kRaw}, 10), Plane({kY, kY}, 20), Plane({kCb}, 30)};
    EXPECT_EQ(Query(), 20);
    planes[1].numComponents = -1;
    EXPECT_EQ(Query(), 10);
}

TEST_F(PlaneLayout, ExaminesFourPlanesAtMost) {
    planes = {Plane({kY}, 1), Plane({kY}, 2), Plane({kY}, 3),
              Plane({kY}, 4), Plane({kY}, 5), Plane({kY}, 6)};
    EXPECT_EQ(Query(), 4);
    const auto lines = log.Take();
    EXPECT_EQ(lines.front(), "I GetPlaneLayout: Number of planes - 4 gralloc format 35");
    EXPECT_EQ(lines.size(), 1u + 4 * 3);

    planes.clear();
    EXPECT_EQ(Query(), -7);
    EXPECT_THAT(log.Take(),
                ElementsAre("I GetPlaneLayout: Number of planes - 0 gralloc format 35"));
}

TEST_F(PlaneLayout, DiesOfMoreComponentsThanThereAre) {
    planes[0].numComponents = 6;
    EXPECT_EXIT(Query(), ::testing::KilledBySignal(SIGABRT), "");
}

}  // namespace
}  // namespace test
