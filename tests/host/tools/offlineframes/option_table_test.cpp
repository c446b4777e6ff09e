// The option table's reader.

#include "host/tools/offlineframes/option_table.h"

#include <gmock/gmock.h>

#include "test_support.h"

namespace offlineframes {
namespace {

using testing::HasSubstr;

const CommandSpec kSpec = {"do",
                           "a deed",
                           "Does it.",
                           {"INPUT", "OUTPUT"},
                           {{"--size", "WxH", "a size"},
                            {"--count", "N", "a number"},
                            {"--force", nullptr, "a switch"}}};

CommandLine read(const std::vector<std::string>& words) {
    return valueOf(readCommandLine(kSpec, words));
}

TEST(CommandLineReader, TakesOptionsInBothFormsAndAnyOrder) {
    const CommandLine line = read({"a", "--count", "7", "--force", "--size=64x48", "b"});
    EXPECT_THAT(line.arguments, testing::ElementsAre("a", "b"));
    EXPECT_TRUE(line.has("--force"));
    EXPECT_EQ(*line.number("--count", 0, 10).value(), 7u);
    EXPECT_EQ(*line.size("--size").value(), (PictureSize{64, 48}));
    EXPECT_FALSE(line.number("--absent", 0, 10).value().has_value());
    // After "--" a word with a dash is a plain one; "-" always is.
    EXPECT_THAT(read({"--", "--force", "-"}).arguments, testing::ElementsAre("--force", "-"));
}

TEST(CommandLineReader, NamesTheWordThatIsWrong) {
    const struct {
        std::vector<std::string> words;
        const char* reason;
    } cases[] = {
            {{"a", "b", "--frobnicate=1"}, "unknown option --frobnicate"},
            {{"a", "b", "-f"}, "unknown option -f"},
            {{"a", "b", "--count"}, "--count needs a value"},
            {{"a", "b", "--force=yes"}, "--force takes no value"},
            {{"a", "b", "--force", "--force"}, "--force is given twice"},
            {{"a"}, "missing OUTPUT"},
            {{"a", "b", "c"}, "unexpected word \"c\""},
    };
    for (const auto& c : cases) {
        const Result<CommandLine> line = readCommandLine(kSpec, c.words);
        ASSERT_FALSE(line.ok()) << c.reason;
        EXPECT_THAT(line.error(), HasSubstr(c.reason));
        EXPECT_TRUE(line.failure().misuse);
    }
}

TEST(CommandLineReader, RefusesValuesOfTheWrongKind) {
    for (const char* text : {"", "-1", "11", "1x", "0x1", "18446744073709551616", " 1"}) {
        EXPECT_FALSE(read({"a", "b", "--count", text}).number("--count", 0, 10).ok()) << text;
    }
    for (const char* text : {"", "x", "64", "64x", "x48", "64X48", "0x48", "-64x48", "64x48x2",
                             "4294967297x2", "40000x1", "32768x32768"}) {
        EXPECT_FALSE(read({"a", "b", "--size", text}).size("--size").ok()) << text;
    }
    for (const char* text : {"", "0", "-1", "nan", "inf", "1e9", "2x"}) {
        EXPECT_FALSE(read({"a", "b", "--count", text}).positiveReal("--count", 200).ok()) << text;
    }
    EXPECT_FALSE(read({"a", "b", "--count", "raw12"}).format("--count").ok());
}

}  // namespace
}  // namespace offlineframes
