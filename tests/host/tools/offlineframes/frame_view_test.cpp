// Dumps are recognised, shown rightly, and refused with numbers when they do not fit.

#include "host/tools/offlineframes/frame_view.h"

#include <gmock/gmock.h>

#include "test_support.h"

namespace offlineframes {
namespace {

using testing::AllOf;
using testing::HasSubstr;

const char* const kYuvDump = "OfflineAidl_CameraId_2_Frame_1_B2Y_Stride[128]_Scanline[64].yuv";
const char* const kJpegDump = "OfflineAidl_CameraId_2_Frame_1_Y2J_Width[64]_Height[48].jpg";

FrameGeometry resolved(const std::string& name, FrameFormat format, const ViewRequest& request,
                       uint64_t bytes) {
    return valueOf(resolveGeometry(name, format, request, bytes));
}

TEST(ResolveGeometry, TakesPaddingFromTheNameAndTheUsualPictureInIt) {
    const FrameGeometry expected = {FrameFormat::kNv12, {4000, 3000}, 4096, 3072};
    const std::string start = "d/OfflineAidl_CameraId_2_Frame_1_B2Y_Stride[4096]";
    EXPECT_EQ(resolved(start + "_Scanline[3072].yuv", FrameFormat::kNv12, {}, 18874368), expected);
    // Without scan lines in the name the file's size gives them.
    EXPECT_EQ(resolved(start + "_Scanline[0].yuv", FrameFormat::kNv12, {}, 18874368), expected);
    EXPECT_EQ(resolved("d/OfflineAidl_CameraId_2_Frame_1_B2Y_Stride[0]_Scanline[3072].yuv",
                       FrameFormat::kNv12, {}, 18874368),
              expected);
    const FrameGeometry raw = {FrameFormat::kRaw10, {4096, 3072}, 5120, 3072};
    // No padding known at all: only the size speaks.
    EXPECT_EQ(resolved("any.raw", FrameFormat::kRaw10, {}, 15728640), raw);
}

TEST(ResolveGeometry, LetsTheCallerOverrule) {
    ViewRequest request;
    request.size = PictureSize{100, 50};
    const FrameGeometry padded = {FrameFormat::kNv12, {100, 50}, 128, 64};
    EXPECT_EQ(resolved(kYuvDump, FrameFormat::kNv12, request, 128 * 64 * 3 / 2), padded);
    // Another size in a file with a source's name: the allocator's padding for that size.
    const FrameGeometry other = {FrameFormat::kNv12, {100, 50}, 128, 128};
    EXPECT_EQ(resolved("mmf_fd.yuv", FrameFormat::kNv12, request, 128 * 128 * 3 / 2), other);
    request.stride = 256;
    request.scanlines = 52;
    const FrameGeometry given = {FrameFormat::kNv12, {100, 50}, 256, 52};
    EXPECT_EQ(resolved(kYuvDump, FrameFormat::kNv12, request, 256 * 52 * 3 / 2), given);
}

TEST(ResolveGeometry, UsesThePaddedSizeOfUnknownFrames) {
    const FrameGeometry whole = {FrameFormat::kNv12, {128, 64}, 128, 64};
    EXPECT_EQ(resolved(kYuvDump, FrameFormat::kNv12, {}, 128 * 64 * 3 / 2), whole);
    // Rounded up to a page by the allocator.
    EXPECT_EQ(resolved(kYuvDump, FrameFormat::kNv12, {}, 4096 * 3), whole);
}

TEST(ResolveGeometry, SaysExpectedAndFoundBytesAndWhatFits) {
    const auto error = [](const std::string& name, FrameFormat format, uint64_t bytes) {
        return errorOf(resolveGeometry(name, format, {}, bytes));
    };
    EXPECT_THAT(error("4000_3000_NV12.yuv", FrameFormat::kNv12, 18000000),
                AllOf(HasSubstr("expected 18874368"), HasSubstr("found 18000000"),
                      HasSubstr("nv12 4000x3000, stride 4000, 3000 scan lines")));
    EXPECT_THAT(error("4096_3072_RAW10.raw", FrameFormat::kRaw10, 15728639),
                AllOf(HasSubstr("expected 15728640"), HasSubstr("found 15728639"),
                      HasSubstr("cut short")));
    EXPECT_THAT(error("4096_3072_RAW10.raw", FrameFormat::kRaw10, 5120 * 3000),
                HasSubstr("3000 scan lines of that stride"));
    EXPECT_THAT(error("any.yuv", FrameFormat::kNv12, 12345), HasSubstr("give --size"));
    EXPECT_THAT(error("OfflineAidl_CameraId_2_Frame_1_B2Y_Stride[4294967295]_Scanline[0].yuv",
                      FrameFormat::kNv12, 12345),
                HasSubstr("give --size"));
    EXPECT_THAT(
            error("OfflineAidl_CameraId_2_Frame_1_B2Y_Stride[4294967294]_Scanline[4294967294].yuv",
                  FrameFormat::kNv12, 12345),
            HasSubstr("must be 1 to"));
}

TEST(ViewFile, DevelopsRawOrShowsItsMosaic) {
    const TestFolder folder;
    const FrameGeometry geometry = allocatorGeometry(FrameFormat::kRaw10, {128, 64});
    const std::string path = folder.file(
            "x.raw", encodeRaw10(flatPicture(128, 64, {255, 255, 255}), geometry, {}, {}));
    ViewRequest request;
    request.size = geometry.size;
    EXPECT_EQ(valueOf(viewFile(path, request)).picture.pixel(64, 32)[0], 255);
    request.mosaic = true;
    const Picture mosaic = valueOf(viewFile(path, request)).picture;
    EXPECT_EQ(mosaic.pixel(0, 0)[0], (64 + 480) / 4);  // red
    EXPECT_EQ(mosaic.pixel(1, 0)[2], 255);             // green
    EXPECT_EQ(mosaic.pixel(1, 1)[1], (64 + 639) / 4);  // blue
}

TEST(ViewFile, ShowsAJpegDumpWithWhatFollowsIt) {
    const TestFolder folder;
    Bytes dump = jpegBytes(gradientPicture(64, 48), 90);
    const size_t length = dump.size();
    dump.resize(64 * 48 * 4 + 20000, 0xA5);
    const std::string path = folder.file(kJpegDump, dump);
    const View upright = valueOf(viewFile(path, {}));
    EXPECT_EQ(upright.picture.width, 48u);
    EXPECT_THAT(upright.description, HasSubstr(std::to_string(length) + " of the file's " +
                                               std::to_string(dump.size())));
    EXPECT_THAT(upright.description, testing::Not(HasSubstr("the name says")));
    ViewRequest asStored;
    asStored.asStored = true;
    EXPECT_EQ(valueOf(viewFile(path, asStored)).picture.width, 64u);
    // A JPEG of another size than the name's is shown, with a note.
    folder.file(kJpegDump, jpegBytes(gradientPicture(32, 16), 0));
    EXPECT_THAT(valueOf(viewFile(path, {})).description, HasSubstr("the name says 64x48"));
}

TEST(ViewFile, RefusesWhatItCannotTellOrUse) {
    const TestFolder folder;
    const std::string picture = folder.file("a.ppm", ppmBytes(gradientPicture(8, 8)));
    const std::string zeros = folder.file("zeros.bin", Bytes(128 * 64 * 3 / 2));
    const std::string frame = folder.file(kYuvDump, Bytes(128 * 64 * 3 / 2));
    const std::string jpeg = folder.file(kJpegDump, Bytes(100));
    ViewRequest mosaic;
    mosaic.mosaic = true;
    ViewRequest asStored;
    asStored.asStored = true;
    const struct {
        std::string path;
        ViewRequest request;
        const char* reason;
    } cases[] = {
            {zeros, {}, "give --format"},
            {jpeg, {}, "does not start with ff d8 ff"},
            {picture, mosaic, "--mosaic"},
            {frame, mosaic, "--mosaic is only for raw10"},
            {frame, asStored, "--as-stored is only for JPEG"},
            {picture, asStored, "--as-stored is only for JPEG"},
            {folder.path("absent.yuv"), {}, "No such file"},
    };
    for (const auto& c : cases) {
        EXPECT_THAT(errorOf(viewFile(c.path, c.request)),
                    AllOf(HasSubstr(c.path), HasSubstr(c.reason)));
    }
}

}  // namespace
}  // namespace offlineframes
