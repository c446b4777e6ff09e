// ./run --source: the tool's frames show a person's own picture, and nothing else is touched.

#include <gmock/gmock.h>

#include "tests/end_to_end/run_script.h"

using ::testing::AllOf;
using ::testing::Gt;
using ::testing::HasSubstr;

namespace end_to_end {
namespace {

namespace fs = std::filesystem;

class OwnPhoto : public RunScript, public ::testing::WithParamInterface<const char*> {
  protected:
    // A smooth picture in which every place differs.
    std::string Save(const std::string& name, int width, int height) const {
        std::ofstream file(m_root + "/" + name);
        file << "P6 " << width << " " << height << " 255\n";
        for (int i = 0; i < width * height; ++i) {
            file << static_cast<char>(40 + i % width * 80 / width)
                 << static_cast<char>(40 + i / width * 80 / height) << '@';
        }
        return m_root + "/" + name;
    }

    const std::string m_frames = m_root + "/out/camera-from-photo/offlinecameratest/";
};

// As the frame shows it that no camera develops.
TEST_P(OwnPhoto, FillsTheFrames) {
    const std::string path = Save("my photo.ppm", 200, 300);
    const Finished finished = Run({"--source", path, "--planes", "-t", GetParam()});
    EXPECT_EQ(finished.status, 0) << finished.err;
    EXPECT_THAT(finished.err, HasSubstr("my photo.ppm: 200 x 300 as seen upright"));
    const fs::directory_iterator made(m_root + "/out/pictures");
    EXPECT_THAT(Psnr(made->path(), m_frames + "4000_3000_NV12.yuv"), Gt(35)) << finished.err;
    EXPECT_FALSE(fs::exists(m_root + "/out/camera"));
}

INSTANTIATE_TEST_SUITE_P(Modes, OwnPhoto, ::testing::Values("B2Y", "Y2J", "MMF"),
                         [](const auto& info) { return std::string(info.param); });

using OwnPhotos = OwnPhoto;

TEST_F(OwnPhotos, ReplaceOnlyTheFramesOfTheRunBefore) {
    EXPECT_THAT(Run({"--source=" + Save("one", 40, 30), "-t", "B2Y"}).err, HasSubstr("left empty"));
    const std::string raw = m_frames + "4096_3072_RAW10.raw";
    const std::string before = ReadFile(raw);
    std::ofstream(m_frames + "notes.txt") << "mine";

    EXPECT_EQ(Run({"--source", Save("two", 30, 40), "-t", "Y2Y"}).status, 0);
    const std::string after = ReadFile(raw);
    EXPECT_NE(after, before);
    EXPECT_EQ(ReadFile(m_frames + "notes.txt"), "mine");

    std::ofstream(m_root + "/no picture") << "text";
    const Finished bad = Run({"--source", m_root + "/no picture", "-t", "Y2Y"});
    EXPECT_EQ(bad.status, 2);
    EXPECT_THAT(bad.err, AllOf(HasSubstr("--source"), HasSubstr("no picture: is not a PNG")));
    EXPECT_EQ(ReadFile(raw), after);
    EXPECT_FALSE(fs::exists(m_root + "/out/camera-from-photo.new"));
}

}  // namespace
}  // namespace end_to_end
