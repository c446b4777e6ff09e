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
    const std::string made = valueOf(makeSources(camera, std::nullopt));
    EXPECT_EQ(readFile(frames + "4096_3072_RAW10.raw").value().size(), 15728640u);
    EXPECT_EQ(readFile(frames + "mmf_fd.yuv").value().size(), 491520u);
    EXPECT_THAT(made, HasSubstr("mmf_fd.yuv: made, 491520 bytes"));

    const Picture raw = valueOf(viewFile(frames + "4096_3072_RAW10.raw", {})).picture;
    const Picture yuv = valueOf(viewFile(frames + "4000_3000_NV12.yuv", {})).picture;
    // 29 dB, the mosaic's losses at edges; two pixels beside it would be 17 dB.
    EXPECT_GT(valueOf(comparePictures(centreCrop(raw, {4000, 3000}), yuv)).psnr, 27);

    // A second run finds everything and changes nothing, not even a user's own file.
    ASSERT_TRUE(writeFile(frames + "mmf_fd.yuv", {1, 2, 3}, Existing::kReplace).ok());
    EXPECT_THAT(valueOf(makeSources(camera, std::nullopt)), testing::Not(HasSubstr("made")));
    EXPECT_THAT(readFile(frames + "mmf_fd.yuv").value(), testing::ElementsAre(1, 2, 3));
}

TEST(Sources, CanShowAPhoto) {
    const TestFolder folder;
    const Picture photo = gradientPicture(320, 240);
    ASSERT_TRUE(makeSources(folder.path("c"), photo).ok());
    const View face = valueOf(viewFile(folder.path("c/offlinecameratest/mmf_fd.yuv"), {}));
    EXPECT_GT(valueOf(comparePictures(face.picture, fitPicture(photo, {640, 480}))).psnr, 40);
}

TEST(MetadataDump, IsABlobTheLibraryAccepts) {
    const Bytes dump = valueOf(makeMetadataDump());
    const size_t size = dump.size();
    const auto* const blob = reinterpret_cast<const camera_metadata_t*>(dump.data());
    EXPECT_EQ(get_camera_metadata_size(blob), size);
    EXPECT_EQ(validate_camera_metadata_structure(blob, &size), 0);
    camera_metadata_ro_entry_t entry = {};
    ASSERT_EQ(find_camera_metadata_ro_entry(blob, ANDROID_JPEG_ORIENTATION, &entry), 0);
    EXPECT_EQ(entry.data.i32[0], 0);
}

}  // namespace
}  // namespace offlineframes
