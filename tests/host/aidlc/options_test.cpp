// The command line and the statuses of the program.
#include "host/aidlc/options.h"

#include <gmock/gmock.h>
#include <sys/wait.h>

#include "sources.h"

namespace aidlc {
namespace {

using testing::ElementsAre;

std::string ErrorOf(const std::vector<std::string>& words) {
    Options options;
    std::string error;
    EXPECT_EQ(ParseOptions(words, &options, &error), error.empty());
    return error;
}

TEST(OptionsTest, TakesAllOptionsInAnyOrder) {
    Options options;
    std::string error;
    ASSERT_TRUE(ParseOptions({"x/A.aidl", "-I", "x", "--hash", "ab12", "--out", "o", "-I", "y",
                              "--version", "3", "x/B.aidl"},
                             &options, &error));
    EXPECT_THAT(options.files, ElementsAre("x/A.aidl", "x/B.aidl"));
    EXPECT_THAT(options.roots, ElementsAre("x", "y"));
    EXPECT_EQ(options.outputFolder, "o");
    EXPECT_EQ(options.version, 3);
    EXPECT_EQ(options.hash, "ab12");
}

TEST(OptionsTest, RefusesBadCommandLines) {
    EXPECT_EQ(ErrorOf({}), "--out is missing: name a folder for the generated files");
    EXPECT_EQ(ErrorOf({"--out", "o"}), "no .aidl file is named");
    EXPECT_EQ(ErrorOf({"--out"}), "option '--out' needs a value");
    EXPECT_EQ(ErrorOf({"--lang", "ndk"}), "unknown option '--lang'");
    for (const char* version : {"0", "-1", "1x", "", "99999999999999999999", "2147483648"}) {
        EXPECT_EQ(ErrorOf({"--out", "o", "a", "--version", version, "--hash", "a"}),
                  std::string("--version '") + version + "' is not a positive number");
    }
    EXPECT_EQ(ErrorOf({"--out", "o", "a", "--version", "1"}),
              "--version and --hash belong together: give both or none");
    EXPECT_EQ(ErrorOf({"--out", "o", "a", "--version", "1", "--hash", "a\"b"}),
              "--hash 'a\"b' is not made of lower-case letters and digits");
}

int StatusOf(const std::string& arguments) {
    const int status = std::system(("'" AIDLC "' " + arguments + " >/dev/null 2>&1").c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(ProgramTest, StatusTellsCommandLineFromSourceFaults) {
    Sources sources;
    sources.Add("a/Good.aidl", "parcelable Good { int i; }");
    sources.Add("a/Bad.aidl", "parcelable Bad { int i }");
    const std::string out = sources.Root() + "/out";
    const std::string good = " " + sources.Root() + "/a/Good.aidl";
    EXPECT_EQ(StatusOf("--help"), 0);
    EXPECT_EQ(StatusOf("--out"), 2);
    EXPECT_EQ(StatusOf("--out " + out + good + " " + sources.Root() + "/a/Bad.aidl"), 1);
    EXPECT_FALSE(std::filesystem::exists(out)) << "one bad file and nothing is written";
    EXPECT_EQ(StatusOf("--out " + out + good), 0);
    EXPECT_TRUE(std::filesystem::exists(out + "/include/aidl/a/Good.h"));
    EXPECT_EQ(StatusOf("--out /dev/null/x" + good), 1);
}

}  // namespace
}  // namespace aidlc
