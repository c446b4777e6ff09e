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

TEST(ResolveGeometry, ComesFromRequestNameAndSizeOrSaysWhatFits) {
    // The last number counts: a camera's id may hold anything.
    const std::string start = "d/OfflineAidl_CameraId_x_Stride[1]_B2Y_Stride";
    const KnownGeometry size = {{}, PictureSize{100, 50}, {}, {}};
    const KnownGeometry all = {{}, PictureSize{100, 50}, 256, 52};
    const std::string large = "nv12 4000x3000, stride 4096, 3072 scan lines";
    const struct {
        std::string name;
        KnownGeometry request;
        uint64_t bytes;
        std::vector<std::string> expected;  // the geometry, or parts of the error
    } cases[] = {
            {start + "[4096]_Scanline[3072].yuv", {}, 18874368, {large}},
            // What the name does not tell, the file's size gives.
            {start + "[4096]_Scanline[0].yuv", {}, 18874368, {large}},
            {start + "[0]_Scanline[3072].yuv", {}, 18874368, {large}},
            {"any.yuv", {}, 18874368, {large}},
            {start + "[4096]_Scanline[8x].yuv", {}, 18874368, {large}},
            {start + "[4096]_Scanline[99999999999].yuv", {}, 18874368, {large}},
            {"Stride[1]_Scanline[3072].yuv", {}, 18874368, {large}},  // no dump's name
            {"any.raw", {}, 15728640, {"raw10 4096x3072, stride 5120, 3072 scan lines"}},
            // A padding that no known frame has; then rounded up to a page.
            {kYuvDump, {}, 128 * 64 * 3 / 2, {"nv12 128x64, stride 128, 64 scan lines"}},
            {start + "[130]_Scanline[64].yuv", {}, 16384, {"nv12 130x64, stride 130, 64 "}},
            {kYuvDump, size, 128 * 64 * 3 / 2, {"nv12 100x50, stride 128, 64 scan lines"}},
            // Another size under a source's name: the allocator's padding for that size.
            {"mmf_fd.yuv", size, 128 * 128 * 3 / 2, {"nv12 100x50, stride 128, 128 scan lines"}},
            {kYuvDump, all, 256 * 52 * 3 / 2, {"nv12 100x50, stride 256, 52 scan lines"}},

            {"4000_3000_NV12.yuv",
             {},
             18000000,
             {"expected 18874368",
              "found 18000000; the size "
              "fits nv12 4000x3000, stride 4000, 3000 scan lines"}},
            {"4096_3072_RAW10.raw",
             {},
             15728639,
             {"expected 15728640",
              "found 15728639; no known "
              "geometry has that size, is the file cut short?"}},
            {"4096_3072_RAW10.raw", {}, 5120 * 3000, {"3000 scan lines of that stride"}},
            {"any.yuv", {}, 12345, {"any.yuv", "cannot tell", "give --size"}},
            {start + "[4294967294]_Scanline[4294967294].yuv", {}, 12345, {"must be 1 to"}},
    };
    for (const auto& c : cases) {
        const bool raw = c.name.find(".raw") != std::string::npos;
        const auto found = resolveGeometry(c.name, raw ? FrameFormat::kRaw10 : FrameFormat::kNv12,
                                           c.request, c.bytes);
        for (const std::string& part : c.expected) {
            EXPECT_THAT(found.Ok() ? describe(found.Value()) : found.Error(), HasSubstr(part))
                    << c.name;
        }
    }
}

TEST(ViewFile, DevelopsRawOrShowsItsMosaic) {
    const TestFolder folder;
    const FrameGeometry geometry = {FrameFormat::kRaw10, {128, 64}, 192, 64};
    const std::string path = folder.file(
            "x.raw", encodeRaw10(flatPicture(128, 64, {255, 255, 255}), geometry, {}, {}));
    ViewRequest request;
    request.size = geometry.size;
    EXPECT_EQ(valueOf(viewFile(path, request)).picture.pixel(64, 32)[0], 255);
    request.mosaic = true;
    EXPECT_EQ(valueOf(viewFile(path, request)).picture.pixel(1, 1)[1], (64 + 639) / 4);  // blue
}

TEST(ViewFile, ShowsAJpegDumpWithWhatFollowsIt) {
    const TestFolder folder;
    Bytes dump = jpegBytes(gradientPicture(64, 48), 90);
    const size_t length = dump.size();
    dump.resize(64 * 48 * 4 + 20000, 0xA5);
    const std::string path = folder.file(kJpegDump, dump);
    const View upright = valueOf(viewFile(path, {}));
    EXPECT_EQ(upright.picture.width, 48u);
    EXPECT_EQ(upright.description, "jpeg 64x48, orientation 6, " + std::to_string(length) +
                                           " of the file's 32288 bytes");
    ViewRequest asStored;
    asStored.asStored = true;
    EXPECT_EQ(valueOf(viewFile(path, asStored)).picture.width, 64u);
    // A JPEG of another size than the name's is shown, with a note.
    folder.file(kJpegDump, jpegBytes(gradientPicture(32, 16), 0));
    EXPECT_THAT(valueOf(viewFile(path, {})).description, HasSubstr("the name says 64x48"));
}

TEST(ViewFile, RefusesWhatItCannotTellOrUse) {
    const TestFolder folder;
    const std::string jpeg = folder.file("a.jpg", jpegBytes(gradientPicture(8, 8), 0));
    const std::string frame = folder.file(kYuvDump, Bytes(128 * 64 * 3 / 2));
    ViewRequest mosaic;
    mosaic.mosaic = true;
    ViewRequest asStored;
    asStored.asStored = true;
    const std::tuple<std::string, ViewRequest, const char*> cases[] = {
            {folder.file("zeros.bin", Bytes(100)), {}, "give --format"},
            {folder.file(kJpegDump, Bytes(100)), {}, "does not start with ff d8 ff"},
            {jpeg, mosaic, "--mosaic"},
            {frame, mosaic, "--mosaic is only for raw10"},
            {frame, asStored, "--as-stored is only for JPEG"},
    };
    for (const auto& [path, request, reason] : cases) {
        EXPECT_THAT(errorOf(viewFile(path, request)), AllOf(HasSubstr(path), HasSubstr(reason)));
    }
}

}  // namespace
}  // namespace offlineframes
