// Frames: every bit of what is encoded; dumps are recognised, shown rightly, or refused with
// numbers.

#include <gmock/gmock.h>
#include <imaging/camera_physics.h>

#include <cmath>

#include "host/tools/offlineframes/frame_encoder.h"
#include "host/tools/offlineframes/frame_view.h"
#include "test_support.h"

namespace offlineframes {
namespace {

using testing::HasSubstr;

// Pixel x of a packed row, by the format's definition: upper eight bits in one byte, the lower two
// of four pixels together in the fifth.
int Raw10Pixel(const uint8_t* row, uint32_t x) {
    const uint8_t* const group = row + x / 4 * 5;
    return group[x % 4] << 2 | (group[4] >> (x % 4 * 2) & 3);
}

TEST(EncodeRaw10, RampHoldsEveryLevelToTheLowestBit) {
    const FrameGeometry geometry = AllocatorGeometry(FrameFormat::kRaw10, {2048, 1024});
    const Bytes bytes = MakeFrame({}, geometry, {});
    const RampRows ramp = RampOf(geometry.size);
    ASSERT_LT(ramp.first, ramp.end);
    for (uint32_t y = ramp.first; y < ramp.end; ++y) {
        for (uint32_t x = (y + 1) % 2; x < 2048; x += 2) {  // green places, 1024 levels
            ASSERT_EQ(Raw10Pixel(&bytes[size_t{y} * geometry.stride], x), static_cast<int>(x / 2));
        }
    }
}

TEST(EncodeFrames, InvertThePhysicsAndPad) {
    // White is 959 after the gains 2.0, 1.0 and 1.5.
    const FrameGeometry raw = {FrameFormat::kRaw10, {8, 4}, 16, 6};
    const Bytes white = EncodeRaw10(FlatPicture(8, 4, {255, 255, 255}), raw, {});
    EXPECT_EQ(Raw10Pixel(white.data(), 0), 64 + 480);       // red at 0, 0
    EXPECT_EQ(Raw10Pixel(white.data(), 1), 1023);           // green beside it
    EXPECT_EQ(Raw10Pixel(white.data() + 16, 0), 1023);      // and below
    EXPECT_EQ(Raw10Pixel(white.data() + 16, 1), 64 + 639);  // blue at 1, 1
    EXPECT_EQ(white.size(), 16u * 6);
    EXPECT_EQ(white[10] + white[16 * 4], 0);  // padding
    EXPECT_EQ(Raw10Pixel(EncodeRaw10(FlatPicture(8, 4, {0, 0, 0}), raw, {}).data(), 5), 64);
    // Luma 0.299 of the red of each pixel, then Cb and Cr of their mean.
    Picture reds({2, 2});
    for (size_t i = 0; i < 4; ++i) reds.rgb[i * 3] = Bytes{255, 100, 50, 20}[i];
    EXPECT_EQ(EncodeNv12(reds, {FrameFormat::kNv12, {2, 2}, 4, 4}, {}),
              (Bytes{76, 30, 0, 0, 15,  6,   0,   0,   0,   0,   0,   0,
                     0,  0,  0, 0, 110, 181, 128, 128, 128, 128, 128, 128}));
}

TEST(EncodeRaw10, DithersSoThatShadowsKeepTheirColour) {
    // Rounding alone makes 2, 1 and 2 of all of them.
    const FrameGeometry geometry = {FrameFormat::kRaw10, {128, 128}, 160, 128};
    const Bytes bytes = EncodeRaw10(FlatPicture(128, 128, {5, 5, 5}), geometry, {});
    double sums[3] = {};
    for (uint32_t y = 0; y < 128; ++y) {
        for (uint32_t x = 0; x < 128; ++x) {
            const imaging::Channel channel = imaging::MosaicChannel(x, y);
            const int level = Raw10Pixel(&bytes[y * 160], x);
            sums[static_cast<int>(channel)] += imaging::LinearFromRaw(level, channel);
        }
    }
    const double linear = 959 * 5 / 255.0 / 12.92;
    EXPECT_THAT(sums, testing::ElementsAre(testing::DoubleNear(linear * 4096, 250),
                                           testing::DoubleNear(linear * 8192, 250),
                                           testing::DoubleNear(linear * 4096, 250)));
}

TEST(Noise, HasItsSigma) {
    double sum = 0;
    double squares = 0;
    const Bytes frame = EncodeNv12(FlatPicture(512, 256, {128, 128, 128}),
                                   {FrameFormat::kNv12, {512, 256}, 512, 256}, {10, 7});
    for (const uint8_t sample : frame) {
        sum += sample - 128;
        squares += (sample - 128) * (sample - 128);
    }
    EXPECT_NEAR(sum / frame.size(), 0, 0.15);  // five standard errors
    EXPECT_NEAR(std::sqrt(squares / frame.size()), 10, 0.1);
}

const char* const kYuvDump = "OfflineAidl_CameraId_2_Frame_1_B2Y_Stride[128]_Scanline[64].yuv";
const char* const kJpegDump = "OfflineAidl_CameraId_2_Frame_1_Y2J_Width[64]_Height[48].jpg";

TEST(ResolveGeometry, ComesFromRequestNameAndSizeOrSaysWhatFits) {
    // The last number counts: a camera's id may hold anything.
    const std::string start = "d/OfflineAidl_CameraId_x_Stride[1]_B2Y_Stride";
    const FrameGeometry size = {FrameFormat::kNv12, {100, 50}, 0, 0};
    const FrameGeometry all = {FrameFormat::kNv12, {100, 50}, 256, 52};
    const std::string large = "nv12 4000x3000, stride 4096, 3072 scan lines";
    const std::string fits = "the size fits nv12 4000x3000, stride 4000, 3000 scan lines";
    const struct {
        std::string name;
        FrameGeometry known;
        uint64_t bytes;
        std::vector<std::string> expected;  // the geometry, or parts of the error
    } cases[] = {
            {start + "[4096]_Scanline[3072].yuv", {}, 18874368, {large}},
            // What the name does not tell, the file's size gives; what is told, counts.
            {"any.yuv",
             {FrameFormat::kNv12, {}, 6144, 0},
             18874368,
             {"nv12 6144x2048, stride 6144"}},
            {start + "[4096]_Scanline[0].yuv", {}, 18874368, {large}},
            {"any.yuv", {}, 18874368, {large}},
            {start + "[4096]_Scanline[8x].yuv", {}, 18874368, {large}},
            {"x_Stride[1]_Scanline[3072].yuv", {}, 18874368, {large}},  // no dump's name
            {"any.raw", {}, 15728640, {"raw10 4096x3072, stride 5120, 3072 scan lines"}},
            // A padding that no known frame has, rounded up to a page.
            {start + "[130]_Scanline[64].yuv", {}, 16384, {"nv12 130x64, stride 130, 64 "}},
            {kYuvDump, size, 128 * 64 * 3 / 2, {"nv12 100x50, stride 128, 64 scan lines"}},
            // Another size under a source's name: the allocator's padding for that size.
            {"mmf_fd.yuv", size, 128 * 128 * 3 / 2, {"nv12 100x50, stride 128, 128 scan lines"}},
            {kYuvDump, all, 256 * 52 * 3 / 2, {"nv12 100x50, stride 256, 52 scan lines"}},
            {"4000_3000_NV12.yuv",
             {},
             18000000,
             {"expected 18874368 bytes", "found 18000000; " + fits}},
            {"4096_3072_RAW10.raw", {}, 15728639, {"is the file cut short?"}},
            // A size alone must be the whole file's: with the allocator's padding or without any.
            {"any.raw",
             {FrameFormat::kRaw10, {128, 64}, 0, 0},
             160 * 64,
             {"raw10 128x64, stride 160, 64 "}},
            {"any.raw",
             {FrameFormat::kRaw10, {100, 50}, 0, 0},
             10240,
             {"expected 6400 bytes for raw10 100x50, stride 128, 50 ", "found 10240"}},
            // A product near 64 bits.
            {start + "[4294967294]_Scanline[4294967294].yuv", size, 12345, {"is larger than the"}},
            {"any.yuv", {}, 12345, {"any.yuv", "cannot tell", "give --size"}},
    };
    for (const auto& c : cases) {
        FrameGeometry known = c.known;
        known.format = *FormatOfName(c.name);
        const auto found = ResolveGeometry(c.name, known, c.bytes);
        EXPECT_EQ(found.Ok(), c.expected[0].rfind(FormatName(known.format), 0) == 0) << c.name;
        for (const std::string& part : c.expected) {
            EXPECT_THAT(found.Ok() ? Describe(found.Value()) : found.Error(), HasSubstr(part))
                    << c.name;
        }
    }
}

TEST(ViewFile, DevelopsRawOrShowsItsMosaic) {
    const TestFolder folder;
    const FrameGeometry geometry = {FrameFormat::kRaw10, {128, 64}, 192, 64};
    const std::string path =
            folder.File("x.raw", EncodeRaw10(FlatPicture(128, 64, {255, 255, 255}), geometry, {}));
    ViewRequest request;
    request.size = geometry.size;
    EXPECT_EQ(ValueOf(ViewFile(path, request)).WholePicture().Pixel(64, 32)[0], 255);
    request.mosaic = true;
    EXPECT_EQ(ValueOf(ViewFile(path, request)).WholePicture().Pixel(1, 1)[1],
              (64 + 639) / 4);  // blue
}

TEST(ViewFile, ShowsAJpegDumpWithWhatFollowsIt) {
    const TestFolder folder;
    Bytes dump = JpegBytes(GradientPicture(64, 48), 90);
    const size_t length = dump.size();
    dump.resize(32288, 0xA5);
    const std::string path = folder.File(kJpegDump, dump);
    const View upright = ValueOf(ViewFile(path, {}));
    EXPECT_EQ(upright.size.width, 48u);
    EXPECT_EQ(upright.description, "jpeg 64x48, orientation 6, " + std::to_string(length) +
                                           " of the file's 32288 bytes");
}

}  // namespace
}  // namespace offlineframes
