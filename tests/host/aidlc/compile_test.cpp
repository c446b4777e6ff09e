// The compiler as a program, and what shows in generated text only.
#include <gmock/gmock.h>
#include <sys/wait.h>

#include "sources.h"

namespace aidlc {
namespace {

using testing::HasSubstr;
using testing::Pair;

std::string Enum(const std::string& value) {
    return "@Backing(type=\"long\") enum T { X = " + value + "}";
}

TEST(ConstantsTest, HaveTheirValues) {
    const std::pair<const char*, const char*> cases[] = {
            {"2147483648", "2147483648L"},
            {"0xffffffff", "-1L"},  // a bit pattern of 32 bits
            {"1L << 63", "INT64_MIN"},
            {"0xf << 28", "-268435456L"},  // an int loses the upper bits
            {"3 | 1 << 1 | -8", "-5L"},    // << before |
            {"-0x80000000, Y", "-2147483648L,\n    Y = -2147483647L"},
    };
    for (const auto& [expression, value] : cases) {
        Sources sources;
        sources.Add("a/T.aidl", Enum(expression));
        ASSERT_EQ(sources.Compile("a/T.aidl"), "");
        EXPECT_THAT(sources.generated["include/aidl/a/T.h"],
                    HasSubstr(std::string(" X = ") + value + ",\n"));
    }
}

std::pair<int, std::string> RunCompiler(const std::string& arguments) {
    FILE* const pipe = popen(("'" AIDLC "' " + arguments + " 2>&1").c_str(), "r");
    std::string output;
    for (int c; (c = fgetc(pipe)) != EOF;) output += static_cast<char>(c);
    const int status = pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

TEST(ProgramTest, StatusTellsCommandLineFromSourceFaults) {
    Sources sources;
    sources.Add("a/IGood.aidl", "interface IGood {}");
    sources.Add("a/Bad.aidl", "parcelable Bad { int i }");
    const std::string out = sources.Path("out");
    const std::string good = " " + sources.Path("a/IGood.aidl");
    const std::string version = " --version 3 --hash ab12";
    const std::tuple<std::string, int, std::string> cases[] = {
            {"--help", 0, "usage: aidlc"},
            {"--out o", 2, "aidlc: no .aidl file is named"},
            {"--out o --lang ndk", 2, "aidlc: unknown option --lang"},
            {"--out o a --version 1", 2, "aidlc: --version and --hash belong together"},
            {"--out " + out + good, 1, "an interface needs --version and --hash"},
            {"--out " + out + version + good + " " + sources.Path("a/Bad.aidl"), 1, ":3:24: "},
            {"--out /dev/null/x" + version + good, 1, "cannot make the folder of /dev/null/x"},
    };
    for (const auto& [arguments, status, output] : cases) {
        EXPECT_THAT(RunCompiler(arguments), Pair(status, HasSubstr(output))) << arguments;
    }
    EXPECT_FALSE(std::filesystem::exists(out)) << "one bad file and nothing is written";
    EXPECT_THAT(RunCompiler("--out " + out + good + version), Pair(0, ""));
    EXPECT_TRUE(std::filesystem::exists(out + "/include/aidl/a/BnGood.h"));
}

}  // namespace
}  // namespace aidlc
