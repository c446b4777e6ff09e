// The program as a person runs it: what it prints, what it leaves behind, its exit status.

#include "host/tools/offlineframes/program.h"

#include <gmock/gmock.h>

#include "test_support.h"

namespace offlineframes {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

struct Outcome {
    int status;
    std::string output;
    std::string errors;
};

Outcome run(const std::vector<std::string>& words) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = RunProgram(words);
    return {status, testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}

TEST(Program, EndsWith2ForAWrongCommandLine) {
    const TestFolder folder;
    const std::string out = folder.path("out");
    const struct {
        std::vector<std::string> words;
        const char* named;
    } cases[] = {
            {{}, "no command"},
            {{"paint"}, "\"paint\""},
            {{"pack", "chart"}, "missing OUTPUT"},
            {{"pack", "--", "--help"}, "missing OUTPUT"},
            {{"pack", "--format", "raw12", "chart", out}, "raw12"},
            {{"pack", "--size", "642x480", "chart", out}, "multiple of 4"},
            {{"pack", "--size", "640x480", "--stride", "10", "chart", out}, "stride of at least"},
            {{"pack", "--seed", "3", "chart", out}, "--seed needs --noise"},
            {{"pack", "--noise", "0", "chart", out}, "--noise"},
            {{"pack", "--size", "64x48x2", "chart", out}, "--size: \"64x48x2\" is not a size like"},
            {{"pack", "--size", "40000x2", "chart", out}, "32767 a side"},
            {{"pack", "--noise", "201", "chart", out}, "above 0, up to 200"},
            {{"compare", "a", "b", "c"}, "unexpected word \"c\""},
            {{"sources"}, "missing DIR"},
    };
    for (const auto& c : cases) {
        const Outcome result = run(c.words);
        EXPECT_EQ(result.status, 2) << c.named;
        EXPECT_THAT(result.errors, HasSubstr(c.named));
        EXPECT_THAT(result.errors, HasSubstr("--help"));
        EXPECT_EQ(result.output, "");
    }
    EXPECT_THAT(folder.names(), ElementsAre());
}

TEST(Program, EndsWith1WhenTheWorkFailsAndLeavesNothing) {
    const TestFolder folder;
    const std::string garbage = folder.file("garbage", Bytes(100, 7));
    const std::string kept = folder.file("kept", {1, 2, 3});
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"pack", folder.path("absent.png"), folder.path("out")},
          {"pack", "--size", "64x48", "chart", kept},
          {"pack", "--size", "64x48", "chart", folder.path("absent/out")},
          {"view", garbage, folder.path("out")},
          {"compare", garbage, kept},
          {"sources", kept},
          {"sources", "--from", garbage, folder.path("out")}}) {
        const Outcome result = run(words);
        EXPECT_EQ(result.status, 1) << words[0] << " " << words[1];
        EXPECT_THAT(result.errors, HasSubstr(folder.path("")));
    }
    EXPECT_THAT(folder.names(), ElementsAre("garbage", "kept"));
    EXPECT_THAT(ReadFile(kept).Value(), ElementsAre(1, 2, 3));
}

TEST(Program, PacksViewsAndComparesAPhoto) {
    const TestFolder folder;
    const std::string photo = folder.file("photo.ppm", ppmBytes(gradientPicture(128, 64)));
    const std::string frame = folder.path("frame.yuv");
    const std::string png = folder.path("frame.png");
    const Outcome packed = run({"pack", "--format", "nv12", "--size", "128x64", "--stride", "192",
                                "--scanlines=80", photo, frame});
    ASSERT_EQ(packed.status, 0) << packed.errors;
    EXPECT_EQ(ReadFile(frame).Value().size(), 192u * 80 * 3 / 2);
    const std::vector<std::string> view = {"view", "--size",      "128x64", "--stride", "192",
                                           frame,  "--scanlines", "80",     png};
    const Outcome viewed = run(view);
    ASSERT_EQ(viewed.status, 0) << viewed.errors;
    EXPECT_THAT(viewed.errors, HasSubstr("nv12 128x64, stride 192, 80 scan lines"));
    EXPECT_EQ(run(view).status, 1);  // the PNG exists now
    std::vector<std::string> forced = view;
    forced.push_back("--force");
    EXPECT_EQ(run(forced).status, 0);

    const Outcome compared = run({"compare", photo, png});
    EXPECT_EQ(compared.status, 0) << compared.errors;
    EXPECT_THAT(compared.output, testing::ContainsRegex("all [4-6][0-9]\\.[0-9]+ dB"));
    EXPECT_THAT(compared.output, testing::ContainsRegex("largest difference [1-4] in "));
    EXPECT_THAT(run({"compare", photo, photo}).output, HasSubstr("all equal"));
    const Outcome help = run({"view", "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.output, HasSubstr("usage: offlineframes view [OPTION...] INPUT OUTPUT.png"));
    EXPECT_THAT(run({"-h"}).output, HasSubstr("  compare   tells in numbers"));
}

// What an option adds shows in the file that the command writes.
TEST(Program, OptionsChangeWhatIsMade) {
    const TestFolder folder;
    const std::string ppm = folder.file("photo.ppm", ppmBytes(gradientPicture(64, 48)));
    const std::string jpeg = folder.file("photo.jpg", jpegBytes(gradientPicture(64, 48), 90));
    const std::string made = folder.file("made", {1});
    const auto make = [&](std::vector<std::string> words) {
        words.insert(words.end(), {"--force", made});
        const Outcome result = run(words);
        EXPECT_EQ(result.status, 0) << result.errors;
        return ReadFile(made).Value();
    };
    const Bytes raw = make({"pack", "--size", "64x48", ppm});
    EXPECT_EQ(raw, make({"pack", "--size", "64x48", "--format", "raw10", ppm}));
    const Bytes noisy = make({"pack", "--size", "64x48", "--noise", "4", ppm});
    EXPECT_NE(noisy, raw);
    EXPECT_EQ(noisy, make({"pack", "--size", "64x48", "--noise", "4", "--seed", "1", ppm}));
    EXPECT_NE(noisy, make({"pack", "--size", "64x48", "--noise", "4", "--seed", "2", ppm}));

    EXPECT_NE(make({"view", jpeg}), make({"view", "--as-stored", jpeg}));
    const std::string level = folder.file("level.jpg", jpegBytes(gradientPicture(64, 48), 0));
    EXPECT_EQ(run({"compare", level, jpeg}).status, 1);  // 64 x 48 and 48 x 64
    EXPECT_EQ(run({"compare", "--as-stored", level, jpeg}).status, 0);
}

}  // namespace
}  // namespace offlineframes
