// ./run --source: the tool's frames show a person's own picture, and nothing else is touched.

#include <gmock/gmock.h>

#include "host/tools/offlineframes/picture_file.h"
#include "tests/end_to_end/run_script.h"
#include "tests/host/tools/offlineframes/test_support.h"

using offlineframes::Picture;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

namespace end_to_end {
namespace {

namespace fs = std::filesystem;

class OwnPhoto : public RunScript {
  protected:
    std::string Folder() const { return m_root + "/out/camera-from-photo"; }

    std::string Save(const std::string& name, const offlineframes::Bytes& bytes) const {
        EXPECT_TRUE(offlineframes::WriteFile(m_root + "/" + name, bytes).Ok());
        return m_root + "/" + name;
    }

    // The one picture that the run said it made.
    Picture MadePicture(const Finished& finished) const {
        const size_t begin = finished.err.find(m_root + "/out/pictures/");
        const size_t end = finished.err.find(".png", begin);
        if (begin == std::string::npos || end == std::string::npos) return Picture();
        const auto read = offlineframes::ReadPicture(finished.err.substr(begin, end + 4 - begin));
        return read.Ok() ? read.Value() : Picture();
    }
};

class OwnPhotoInMode : public OwnPhoto, public ::testing::WithParamInterface<const char*> {};

// A turned phone picture: 200 x 300 as seen, so its middle band fills the frames.
TEST_P(OwnPhotoInMode, FillsTheFramesUpright) {
    const auto jpeg = offlineframes::JpegBytes(offlineframes::GradientPicture(300, 200), 90);
    const std::string path = Save("my photo.jpg", jpeg);
    const Picture upright = offlineframes::DecodePicture(jpeg, path).Value();
    const Picture expected = offlineframes::CentreCrop(
            offlineframes::FitPicture(upright, {4096, 3072}), {4000, 3000});
    const Finished finished = Run({"--source", path, "--planes", "-t", GetParam()});
    EXPECT_EQ(finished.status, 0) << finished.err;
    EXPECT_THAT(finished.err, HasSubstr("my photo.jpg: 200 x 300 as seen upright"));
    const auto compared = offlineframes::ComparePictures(MadePicture(finished), expected);
    ASSERT_TRUE(compared.Ok()) << compared.Error() << finished.err;
    EXPECT_GT(compared.Value().psnr, 35);
    EXPECT_FALSE(fs::exists(m_root + "/out/camera"));
}

INSTANTIATE_TEST_SUITE_P(Modes, OwnPhotoInMode, ::testing::Values("B2Y", "Y2J", "MMF"),
                         [](const auto& info) { return std::string(info.param); });

TEST_F(OwnPhoto, ReplacesOnlyTheFramesOfTheRunBefore) {
    const auto png = offlineframes::PngBytes(offlineframes::GradientPicture(40, 30));
    const Finished first = Run({"--source=" + Save("one", png), "-t", "B2Y"});
    EXPECT_THAT(first.err, HasSubstr("left empty"));
    const std::string raw = Folder() + "/offlinecameratest/4096_3072_RAW10.raw";
    const std::string before = ReadFile(raw);
    std::ofstream(Folder() + "/offlinecameratest/notes.txt") << "mine";

    const auto grey = offlineframes::PngBytes(offlineframes::FlatPicture(10, 10, {99, 99, 99}));
    EXPECT_EQ(Run({"--source", Save("two", grey), "-t", "Y2Y"}).status, 0);
    const std::string after = ReadFile(raw);
    EXPECT_NE(after, before);
    EXPECT_EQ(ReadFile(Folder() + "/offlinecameratest/notes.txt"), "mine");

    const Finished bad = Run({"--source", Save("not a picture", {1, 2, 3}), "-t", "Y2Y"});
    EXPECT_EQ(bad.status, 2);
    EXPECT_THAT(bad.err, AllOf(HasSubstr("--source"), HasSubstr("not a picture: is not a PNG")));
    EXPECT_EQ(ReadFile(raw), after);
    EXPECT_FALSE(fs::exists(Folder() + ".new"));
}

TEST_F(OwnPhoto, LeavesADataFolderOfTheUsersAlone) {
    fs::create_directory(m_root + "/mine");
    const std::string photo = Save("photo", {});
    const Finished both = Run({"--data", m_root + "/mine", "--source", photo, "-t", "B2Y"});
    EXPECT_EQ(both.status, 2);
    EXPECT_THAT(both.err, AllOf(HasSubstr("exclude each other"), HasSubstr("/run\\ script-")));
    EXPECT_TRUE(fs::is_empty(m_root + "/mine"));
    const Finished missing = Run({"--source", m_root + "/no photo", "-t", "B2Y"});
    EXPECT_EQ(missing.status, 2);
    EXPECT_THAT(missing.err, HasSubstr("/no photo: no picture"));
}

}  // namespace
}  // namespace end_to_end
