// Dumps are recognised, shown rightly, and refused with numbers when they do not fit.

#include <gmock/gmock.h>

#include "host/tools/offlineframes/frame_view.h"
#include "test_support.h"

namespace offlineframes {
namespace {

using testing::AllOf;
using testing::HasSubstr;

const char* const kYuvDump = "OfflineAidl_CameraId_2_Frame_1_B2Y_Stride[128]_Scanline[64].yuv";
const char* const kJpegDump = "OfflineAidl_CameraId_2_Frame_1_Y2J_Width[64]_Height[48].jpg";

TEST(ResolveGeometry, ComesFromRequestNameAndSize) {
    const FrameFormat nv12 = FrameFormat::kNv12;
    const std::string start = "d/OfflineAidl_CameraId_2_Frame_1_B2Y_Stride";
    const KnownGeometry size = {{}, PictureSize{100, 50}, {}, {}};
    const KnownGeometry all = {{}, PictureSize{100, 50}, 256, 52};
    const FrameGeometry large = {nv12, {4000, 3000}, 4096, 3072};
    const struct {
        std::string name;
        KnownGeometry request;
        uint64_t bytes;
        FrameGeometry expected;
    } cases[] = {
            {start + "[4096]_Scanline[3072].yuv", {}, 18874368, large},
            // What the name does not tell, the file's size gives.
            {start + "[4096]_Scanline[0].yuv", {}, 18874368, large},
            {start + "[0]_Scanline[3072].yuv", {}, 18874368, large},
            {"any.yuv", {}, 18874368, large},
            {"any.raw", {}, 15728640, {FrameFormat::kRaw10, {4096, 3072}, 5120, 3072}},
            // A padding that no known frame has; then rounded up to a page.
            {kYuvDump, {}, 128 * 64 * 3 / 2, {nv12, {128, 64}, 128, 64}},
            {start + "[130]_Scanline[64].yuv", {}, 4096 * 4, {nv12, {130, 64}, 130, 64}},
            {kYuvDump, size, 128 * 64 * 3 / 2, {nv12, {100, 50}, 128, 64}},
            // Another size under a source's name: the allocator's padding for that size.
            {"mmf_fd.yuv", size, 128 * 128 * 3 / 2, {nv12, {100, 50}, 128, 128}},
            {kYuvDump, all, 256 * 52 * 3 / 2, {nv12, {100, 50}, 256, 52}},
    };
    for (const auto& c : cases) {
        const auto found = ResolveGeometry(c.name, c.expected.format, c.request, c.bytes);
        EXPECT_EQ(Describe(valueOf(found)), Describe(c.expected)) << c.name;
    }
}

TEST(ResolveGeometry, SaysExpectedAndFoundBytesAndWhatFits) {
    const std::string huge = "OfflineAidl_CameraId_2_Frame_1_B2Y_Stride[4294967294]_Scanline[";
    const struct {
        std::string name;
        FrameFormat format;
        uint64_t bytes;
        const char* first;
        const char* second;
    } cases[] = {
            {"4000_3000_NV12.yuv", FrameFormat::kNv12, 18000000, "expected 18874368",
             "found 18000000; the size fits nv12 4000x3000, stride 4000, 3000 scan lines"},
            {"4096_3072_RAW10.raw", FrameFormat::kRaw10, 15728639, "expected 15728640",
             "found 15728639; no known geometry has that size, is the file cut short?"},
            {"4096_3072_RAW10.raw", FrameFormat::kRaw10, 5120 * 3000, "expected 15728640",
             "3000 scan lines of that stride"},
            {"any.yuv", FrameFormat::kNv12, 12345, "cannot tell", "give --size"},
            {huge + "4294967294].yuv", FrameFormat::kNv12, 12345, "nv12", "must be 1 to"},
    };
    for (const auto& c : cases) {
        EXPECT_THAT(errorOf(ResolveGeometry(c.name, c.format, {}, c.bytes)),
                    AllOf(HasSubstr(c.name), HasSubstr(c.first), HasSubstr(c.second)));
    }
}

TEST(ViewFile, DevelopsRawOrShowsItsMosaic) {
    const TestFolder folder;
    const FrameGeometry geometry = AllocatorGeometry(FrameFormat::kRaw10, {128, 64});
    const std::string path = folder.file(
            "x.raw", EncodeRaw10(flatPicture(128, 64, {255, 255, 255}), geometry, {}, {}));
    ViewRequest request;
    request.size = geometry.size;
    EXPECT_EQ(valueOf(ViewFile(path, request)).WholePicture().Pixel(64, 32)[0], 255);
    request.mosaic = true;
    const Picture mosaic = valueOf(ViewFile(path, request)).WholePicture();
    EXPECT_EQ(mosaic.Pixel(0, 0)[0], (64 + 480) / 4);  // red
    EXPECT_EQ(mosaic.Pixel(1, 0)[2], 255);             // green
    EXPECT_EQ(mosaic.Pixel(1, 1)[1], (64 + 639) / 4);  // blue
}

TEST(ViewFile, ShowsAJpegDumpWithWhatFollowsIt) {
    const TestFolder folder;
    Bytes dump = jpegBytes(gradientPicture(64, 48), 90);
    const size_t length = dump.size();
    dump.resize(64 * 48 * 4 + 20000, 0xA5);
    const std::string path = folder.file(kJpegDump, dump);
    const View upright = valueOf(ViewFile(path, {}));
    EXPECT_EQ(upright.size.width, 48u);
    EXPECT_EQ(upright.description, "jpeg 64x48, orientation 6, " + std::to_string(length) +
                                           " of the file's " + std::to_string(dump.size()) +
                                           " bytes");
    ViewRequest asStored;
    asStored.asStored = true;
    EXPECT_EQ(valueOf(ViewFile(path, asStored)).size.width, 64u);
    // A JPEG of another size than the name's is shown, with a note.
    folder.file(kJpegDump, jpegBytes(gradientPicture(32, 16), 0));
    EXPECT_THAT(valueOf(ViewFile(path, {})).description, HasSubstr("the name says 64x48"));
}

TEST(ViewFile, RefusesWhatItCannotTellOrUse) {
    const TestFolder folder;
    const std::string picture = folder.file("a.ppm", ppmBytes(gradientPicture(8, 8)));
    const std::string frame = folder.file(kYuvDump, Bytes(128 * 64 * 3 / 2));
    ViewRequest mosaic;
    mosaic.mosaic = true;
    ViewRequest asStored;
    asStored.asStored = true;
    const struct {
        std::string path;
        ViewRequest request;
        const char* reason;
    } cases[] = {
            {folder.file("zeros.bin", Bytes(100)), {}, "give --format"},
            {folder.file(kJpegDump, Bytes(100)), {}, "does not start with ff d8 ff"},
            {picture, mosaic, "--mosaic"},
            {frame, mosaic, "--mosaic is only for raw10"},
            {frame, asStored, "--as-stored is only for JPEG"},
            {picture, asStored, "--as-stored is only for JPEG"},
    };
    for (const auto& c : cases) {
        EXPECT_THAT(errorOf(ViewFile(c.path, c.request)),
                    AllOf(HasSubstr(c.path), HasSubstr(c.reason)));
    }
}

}  // namespace
}  // namespace offlineframes
