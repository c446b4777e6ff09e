// The program as a person runs it: what it prints, what it leaves behind, its exit status.

#include "host/tools/offlineframes/program.h"

#include <gmock/gmock.h>

#include "host/tools/offlineframes/picture_file.h"
#include "test_support.h"

namespace offlineframes {
namespace {

using testing::AllOf;
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
    const int status = runProgram(words);
    return {status, testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}

TEST(Program, EndsWith2ForAWrongCommandLine) {
    const TestFolder folder;
    const std::pair<std::vector<std::string>, const char*> cases[] = {
            {{}, "no command"},
            {{"paint"}, "\"paint\""},
            {{"sources"}, "missing DIR"},
            {{"pack", "--format", "raw12"}, "raw12"},
            {{"pack", "--size", "642x480"}, "multiple of 4"},
            {{"pack", "--seed", "3"}, "--seed needs --noise"},
            {{"pack", "--noise", "0"}, "--noise"},
            {{"pack", "--noise", "201"}, "above 0, up to 200"},
            {{"pack", "--size", "64x48x2"}, "--size: \"64x48x2\" is not a size like"},
            {{"pack", "--size", "40000x2"}, "32767 a side"},
    };
    for (auto [words, named] : cases) {
        if (words.size() > 1) words.insert(words.end(), {"chart", folder.path("out")});
        const Outcome result = run(words);
        EXPECT_EQ(result.status, 2) << named;
        EXPECT_THAT(result.errors, AllOf(HasSubstr(named), HasSubstr("--help")));
        EXPECT_EQ(result.output, "");
    }
    EXPECT_THAT(folder.names(), ElementsAre());
}

TEST(Program, EndsWith1WhenTheWorkFailsAndLeavesNothing) {
    const TestFolder folder;
    const std::string garbage = folder.file("garbage", Bytes(100, 7));
    const std::string kept = folder.file("kept", {1, 2, 3});
    using Words = std::vector<std::string>;
    for (const Words& words : {Words{"pack", folder.path("absent.png"), folder.path("out")},
                               {"pack", "--size", "64x48", "chart", kept},
                               {"view", garbage, folder.path("out")},
                               {"compare", garbage, kept},
                               {"sources", "--from", garbage, folder.path("out")}}) {
        const Outcome result = run(words);
        EXPECT_EQ(result.status, 1) << words[0] << " " << words[1];
        EXPECT_THAT(result.errors, HasSubstr(folder.path("")));
    }
    EXPECT_THAT(folder.names(), ElementsAre("garbage", "kept"));
    EXPECT_THAT(readFile(kept).Value(), ElementsAre(1, 2, 3));
}

TEST(Program, PacksViewsAndComparesAPhoto) {
    const TestFolder folder;
    const std::string photo =
            folder.file("photo", valueOf(encodePng(gradientPicture(128, 64), "photo")));
    const std::string frame = folder.path("frame.yuv");
    const std::string png = folder.path("frame.png");
    const Outcome packed = run({"pack", "--format", "nv12", "--size", "128x64", "--stride", "192",
                                "--scanlines=80", photo, frame});
    ASSERT_EQ(packed.status, 0) << packed.errors;
    EXPECT_EQ(readFile(frame).Value().size(), 192u * 80 * 3 / 2);
    std::vector<std::string> view = {"view", "--size",      "128x64", "--stride", "192",
                                     frame,  "--scanlines", "80",     png};
    EXPECT_THAT(run(view).errors, HasSubstr("nv12 128x64, stride 192, 80 scan lines"));
    EXPECT_EQ(run(view).status, 1);  // the PNG exists now
    view.push_back("--force");
    EXPECT_EQ(run(view).status, 0);

    const Outcome compared = run({"compare", photo, png});
    EXPECT_EQ(compared.status, 0) << compared.errors;
    EXPECT_THAT(compared.output, testing::ContainsRegex("all [4-6][0-9]\\.[0-9]+ dB"));
    EXPECT_THAT(compared.output, testing::ContainsRegex("largest difference [1-4] in "));
    EXPECT_THAT(run({"compare", photo, photo}).output, HasSubstr("all equal"));
    EXPECT_THAT(run({"view", "--help"}).output,
                HasSubstr("usage: offlineframes view [OPTION...] INPUT OUTPUT.png"));
    EXPECT_THAT(run({"-h"}).output, HasSubstr("  compare   tells in numbers"));
}

// What an option adds shows in the file that the command writes.
TEST(Program, OptionsChangeWhatIsMade) {
    const TestFolder folder;
    const std::string jpeg = folder.file("photo.jpg", jpegBytes(gradientPicture(64, 48), 90));
    const auto make = [&](std::vector<std::string> words) {
        words.insert(words.end(), {"--force", jpeg, folder.path("made")});
        const Outcome result = run(words);
        EXPECT_EQ(result.status, 0) << result.errors;
        return readFile(folder.path("made")).Value();
    };
    const Bytes raw = make({"pack", "--size", "64x48"});
    EXPECT_EQ(raw, make({"pack", "--size", "64x48", "--format", "raw10"}));
    const Bytes noisy = make({"pack", "--size", "64x48", "--noise", "4"});
    EXPECT_NE(noisy, raw);
    EXPECT_EQ(noisy, make({"pack", "--size", "64x48", "--noise", "4", "--seed", "1"}));
    EXPECT_NE(noisy, make({"pack", "--size", "64x48", "--noise", "4", "--seed", "2"}));
    EXPECT_NE(make({"view"}), make({"view", "--as-stored"}));
    const std::string level = folder.file("level.jpg", jpegBytes(gradientPicture(64, 48), 0));
    EXPECT_EQ(run({"compare", level, jpeg}).status, 1);  // 64 x 48 and 48 x 64
    EXPECT_EQ(run({"compare", "--as-stored", level, jpeg}).status, 0);
}

}  // namespace
}  // namespace offlineframes
