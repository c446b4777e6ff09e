// The set of source files: complete, of the right sizes, never overwritten.

#include "host/tools/offlineframes/source_set.h"

#include <gmock/gmock.h>
#include <system/camera_metadata.h>

#include "host/tools/offlineframes/compare.h"
#include "host/tools/offlineframes/frame_view.h"
#include "host/tools/offlineframes/metadata_dump.h"
#include "host/tools/offlineframes/resample.h"
#include "test_support.h"

namespace offlineframes {
namespace {

using testing::HasSubstr;

TEST(Sources, AreMadeOnceAndShowTheSameScene) {
    const TestFolder folder;
    const std::string camera = folder.path("camera");
    const std::string frames = camera + "/offlinecameratest/";
    const Result<std::string> made = makeSources(camera, std::nullopt);
    ASSERT_TRUE(made.ok()) << made.error();
    EXPECT_EQ(readFile(frames + "4096_3072_RAW10.raw").value().size(), 15728640u);
    EXPECT_EQ(readFile(frames + "mmf_fd.yuv").value().size(), 491520u);
    EXPECT_THAT(made.value(), HasSubstr("mmf_fd.yuv: made, 491520 bytes"));

    const Result<View> raw = viewFile(frames + "4096_3072_RAW10.raw", {});
    const Result<View> yuv = viewFile(frames + "4000_3000_NV12.yuv", {});
    ASSERT_TRUE(raw.ok()) << raw.error();
    ASSERT_TRUE(yuv.ok()) << yuv.error();
    const Picture cut = centreCrop(raw.value().picture, {4000, 3000});
    // 29 dB, the mosaic's losses at edges; two pixels beside it would be 17 dB.
    EXPECT_GT(comparePictures(cut, yuv.value().picture).value().psnr, 27);

    // A second run finds everything and changes nothing, not even a user's own file.
    ASSERT_TRUE(writeFile(frames + "mmf_fd.yuv", {1, 2, 3}, Existing::kReplace).ok());
    const Result<std::string> again = makeSources(camera, std::nullopt);
    ASSERT_TRUE(again.ok()) << again.error();
    EXPECT_THAT(again.value(), testing::Not(HasSubstr("made")));
    EXPECT_THAT(readFile(frames + "mmf_fd.yuv").value(), testing::ElementsAre(1, 2, 3));
}

TEST(Sources, CanShowAPhoto) {
    const TestFolder folder;
    const Picture photo = gradientPicture(320, 240);
    ASSERT_TRUE(makeSources(folder.path("c"), photo).ok());
    const Result<View> face = viewFile(folder.path("c/offlinecameratest/mmf_fd.yuv"), {});
    ASSERT_TRUE(face.ok()) << face.error();
    const Picture expected = fitPicture(photo, {640, 480});
    EXPECT_GT(comparePictures(face.value().picture, expected).value().psnr, 40);
}

TEST(MetadataDump, IsABlobTheLibraryAccepts) {
    const Result<Bytes> dump = makeMetadataDump();
    ASSERT_TRUE(dump.ok()) << dump.error();
    const size_t size = dump.value().size();
    const auto* const blob = reinterpret_cast<const camera_metadata_t*>(dump.value().data());
    EXPECT_EQ(get_camera_metadata_size(blob), size);
    EXPECT_EQ(validate_camera_metadata_structure(blob, &size), 0);
    camera_metadata_ro_entry_t entry = {};
    ASSERT_EQ(find_camera_metadata_ro_entry(blob, ANDROID_JPEG_ORIENTATION, &entry), 0);
    EXPECT_EQ(entry.data.i32[0], 0);
}

}  // namespace
}  // namespace offlineframes
