// The program as a person runs it: what it prints, its exit status, the files it makes and keeps.

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "test_support.h"
#include "tests/support/subprocess.h"

namespace offlineframes {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

end_to_end::Finished Execute(std::vector<std::string> words) {
    words.insert(words.begin(), OFFLINEFRAMES);
    return end_to_end::RunProgram(words);
}

TEST(Program, EndsWith2ForAWrongCommandLine) {
    const TestFolder folder;
    const std::pair<std::vector<std::string>, const char*> cases[] = {
            {{}, "no command"},
            {{"sources"}, "missing DIR"},
            {{"pack", "--format", "raw12"}, "raw12"},
            {{"pack", "--size", "642x480"}, "multiple of 4"},
            {{"pack", "--stride", "5119"}, "stride of at least 5120"},
            {{"pack", "--scanlines", "3071"}, "at least 3072 scan lines"},
            {{"pack", "--seed", "3"}, "--seed needs --noise"},
            {{"pack", "--noise", "201"}, "above 0, up to 200"},
            {{"pack", "--size", "64x48x2"}, "--size: \"64x48x2\" is not a size like"},
    };
    for (auto [words, named] : cases) {
        if (words.size() > 1) words.insert(words.end(), {"chart", folder.Path("out")});
        const auto result = Execute(words);
        EXPECT_EQ(result.status, 2) << named;
        EXPECT_THAT(result.err, AllOf(HasSubstr(named), HasSubstr("--help")));
        EXPECT_EQ(result.out, "");
    }
    EXPECT_THAT(folder.Names(), ElementsAre());
}

TEST(Program, EndsWith1WhenTheWorkFailsAndLeavesNothing) {
    const TestFolder folder;
    const std::string garbage = folder.File("garbage", Bytes(100, 7));
    const std::string kept = folder.File("kept", {1, 2, 3});
    const std::string out = folder.Path("out.png");
    const std::string frame = folder.File("frame.yuv", Bytes(640 * 480 * 3 / 2));
    std::filesystem::create_hard_link(garbage, folder.Path("same"));
    const std::pair<std::vector<std::string>, const char*> cases[] = {
            {{"pack", folder.Path("absent.png"), folder.Path("out")}, "No such file"},
            {{"pack", "--size", "64x48", "chart", kept}, "exists already"},
            {{"pack", "--force", garbage, folder.Path("same")}, "is the input"},
            {{"pack", "chart", out}, "is a picture's name"},
            {{"view", "--force", kept, kept + ".jpg"}, "ends in .png"},
            {{"view", garbage, out}, "is not a PNG"},
            {{"view", folder.File("x.jpg", Bytes(9)), out}, "does not start with ff d8 ff"},
            {{"view", "--mosaic", frame, out}, "--mosaic is only for raw10"},
            {{"view", "--as-stored", frame, out}, "--as-stored is only for JPEG"},
            {{"compare", garbage, kept}, "is not a PNG"},
            {{"sources", "--from", garbage, folder.Path("out")}, "is not a PNG"},
    };
    for (const auto& [words, reason] : cases) {
        const auto result = Execute(words);
        EXPECT_EQ(result.status, 1) << words[0] << " " << words[1];
        EXPECT_THAT(result.err, AllOf(HasSubstr(folder.Path("")), HasSubstr(reason)));
    }
    EXPECT_THAT(folder.Names(), ElementsAre("frame.yuv", "garbage", "kept", "same", "x.jpg"));
    EXPECT_THAT(ReadFile(kept).Value(), ElementsAre(1, 2, 3));
}

TEST(Program, PacksViewsAndComparesAPhoto) {
    const TestFolder folder;
    const std::string photo = folder.File("photo", PngBytes(GradientPicture(128, 64)));
    const std::string frame = folder.Path("frame.yuv");
    const std::string png = folder.Path("frame.png");
    const auto packed = Execute({"pack", "--format", "nv12", "--size", "128x64", "--stride", "192",
                                 "--scanlines=80", photo, frame});
    ASSERT_EQ(packed.status, 0) << packed.err;
    std::vector<std::string> view = {"view", "--size=128x64",  "--stride=192",
                                     frame,  "--scanlines=80", png};
    EXPECT_THAT(Execute(view).err, HasSubstr("nv12 128x64, stride 192, 80 scan lines"));
    EXPECT_EQ(Execute(view).status, 1);  // the PNG exists now
    view.push_back("--force");
    EXPECT_EQ(Execute(view).status, 0);
    const std::string compared = Execute({"compare", photo, png}).out;
    EXPECT_THAT(compared, testing::ContainsRegex("all [4-6][0-9]\\.[0-9]+ dB"));
    EXPECT_THAT(compared, testing::ContainsRegex("largest difference [1-4] in "));
    EXPECT_THAT(Execute({"compare", photo, photo}).out, HasSubstr("all equal"));
    EXPECT_THAT(Execute({"view", "--help"}).out,
                HasSubstr("usage: offlineframes view [OPTION...] INPUT OUTPUT.png"));
    EXPECT_THAT(Execute({"-h"}).out, HasSubstr("  compare   tells in numbers"));
}

// What an option adds shows in the file that the command writes.
TEST(Program, OptionsChangeWhatIsMade) {
    const TestFolder folder;
    const std::string jpeg = folder.File("photo.jpg", JpegBytes(GradientPicture(64, 48), 90));
    const auto make = [&](std::vector<std::string> words) {
        const std::string made = folder.Path(words[0] == "view" ? "made.png" : "made");
        words.insert(words.end(), {"--force", jpeg, made});
        const auto result = Execute(words);
        EXPECT_EQ(result.status, 0) << result.err;
        return ReadFile(made).Value();
    };
    const Bytes raw = make({"pack", "--size", "64x48"});
    EXPECT_EQ(raw, make({"pack", "--size", "64x48", "--format", "raw10"}));
    const Bytes noisy = make({"pack", "--size", "64x48", "--noise", "4"});
    EXPECT_NE(noisy, raw);
    EXPECT_EQ(noisy, make({"pack", "--size", "64x48", "--noise", "4", "--seed", "1"}));
    EXPECT_NE(noisy, make({"pack", "--size", "64x48", "--noise", "4", "--seed", "2"}));
    EXPECT_NE(make({"view"}), make({"view", "--as-stored"}));
}

TEST(Program, SaysThatMemoryRanOut) {
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
    GTEST_SKIP() << "sanitizers need more address space than there is";
#endif
    const TestFolder folder;
    const std::string png =
            folder.File("large", EncodePng({9000, 9000}, [](uint32_t, uint8_t*) {}));
    // In KiB: the chart needs 316,406 for its pixels and 237,305 for the picture made of them, the
    // PNG 237,305 as soon as it is read.
    for (const auto& [limit, input, said] :
         {std::tuple("320000", std::string("chart"), "not enough memory for a"),
          {"150000", png, "out of memory for this PNG"}}) {
        const auto result = end_to_end::RunProgram(
                {"sh", "-c", "ulimit -v $1; exec \"$0\" pack --size 9000x9000 \"$2\" \"$3\"",
                 OFFLINEFRAMES, limit, input, folder.Path("out")});
        EXPECT_EQ(result.status, 1);
        EXPECT_THAT(result.err, HasSubstr(said));
    }
}

TEST(FileIo, ReadsAndReplacesOnlyRegularFiles) {
    const TestFolder folder;
    ASSERT_EQ(mkfifo(folder.Path("pipe").c_str(), 0600), 0);
    ASSERT_EQ(truncate(folder.File("huge", {1}).c_str(), static_cast<off_t>(kMaxFileBytes) + 1), 0);
    ASSERT_EQ(truncate(folder.File("empty", {1}).c_str(), 0), 0);
    for (const auto& [name, reason] :
         {std::pair("pipe", "not a regular file"), {"huge", "more than"}, {"empty", "is empty"}}) {
        EXPECT_THAT(ErrorOf(ReadFile(folder.Path(name))),
                    AllOf(HasSubstr(folder.Path(name)), HasSubstr(reason)));
    }
    ASSERT_EQ(symlink("/dev/null", folder.Path("link").c_str()), 0);
    EXPECT_THAT(ErrorOf(WriteFile(folder.Path("link"), {1})), HasSubstr("not a regular file"));
}

TEST(Sources, AreMadeOnce) {
    const TestFolder folder;
    const std::string camera = folder.Path("camera");
    const std::string frames = camera + "/offlinecameratest/";
    EXPECT_THAT(Execute({"sources", camera}).err,
                AllOf(HasSubstr("mmf_fd.yuv: made, 491520 bytes"),
                      HasSubstr("4096_3072_RAW10.raw: made, 15728640 bytes")));
    // A second run finds everything and changes nothing, not even a user's own file.
    ValueOf(WriteFile(frames + "mmf_fd.yuv", {1, 2, 3}));
    EXPECT_THAT(Execute({"sources", camera}).err, testing::Not(HasSubstr("made")));
    EXPECT_THAT(ValueOf(ReadFile(frames + "mmf_fd.yuv")), ElementsAre(1, 2, 3));
}

TEST(FileIo, LeavesNothingWhenASignalEndsTheProgram) {
    const TestFolder folder;
    const auto writeBeyondTheLimit = [&] {
        const rlimit limit = {10'000, 10'000};
        setrlimit(RLIMIT_FSIZE, &limit);
        static_cast<void>(WriteFile(folder.Path("frame"), Bytes(20'000)));
        _exit(0);
    };
    EXPECT_EXIT(writeBeyondTheLimit(), testing::KilledBySignal(SIGXFSZ), "");
    EXPECT_THAT(folder.Names(), ElementsAre());
}

}  // namespace
}  // namespace offlineframes
