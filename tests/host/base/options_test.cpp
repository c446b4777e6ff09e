// Command lines read by a table of options.
#include <base/options.h>
#include <gmock/gmock.h>

namespace {

using base::Order;
using testing::ElementsAre;

struct Line {
    bool loud = false;
    std::string name;
    std::vector<std::string> notes;
    std::optional<uint64_t> count;
    std::vector<base::Option> Table() {
        return {base::Switch("-l", "loud", &loud), base::Text("--name", "NAME", "a name", &name),
                base::Texts("--note", "TEXT", "notes", &notes),
                base::Number("--count", "N", "how many\ntimes", 1, 9, &count)};
    }
};

TEST(Options, AreReadInBothFormsAndOrders) {
    const std::vector<std::string> words = {"-l",     "--name=a=b", "--note", "x", "word",
                                            "--note", "y",          "--",     "-l"};
    Line line;
    const auto others = base::ReadOptions(line.Table(), words, Order::kAnywhere);
    ASSERT_TRUE(others.Ok()) << others.Error();
    EXPECT_THAT(others.Value(), ElementsAre("word", "-l"));
    EXPECT_TRUE(line.loud);
    EXPECT_EQ(line.name, "a=b");
    EXPECT_THAT(line.notes, ElementsAre("x", "y"));

    Line first;
    const auto rest = base::ReadOptions(first.Table(), words, Order::kBeforeWords);
    ASSERT_TRUE(rest.Ok());
    EXPECT_THAT(rest.Value(), ElementsAre("word", "--note", "y", "--", "-l"));
    EXPECT_THAT(first.notes, ElementsAre("x"));
}

TEST(Options, MistakesAreNamed) {
    const struct {
        std::vector<std::string> words;
        const char* error;
    } cases[] = {
            {{"--none"}, "unknown option --none"},
            {{"--none=1"}, "unknown option --none"},
            {{"-l", "-l"}, "-l is given twice"},
            {{"-l=1"}, "option -l takes no value"},
            {{"--name"}, "option --name needs a value: NAME"},
            {{"--name="}, "option --name needs a value: NAME"},
            {{"--count", "10"}, "--count: \"10\" is not a number from 1 to 9"},
            {{"--count", "3x"}, "--count: \"3x\" is not a number from 1 to 9"},
    };
    for (const auto& mistake : cases) {
        Line line;
        const auto others = base::ReadOptions(line.Table(), mistake.words, Order::kAnywhere);
        ASSERT_FALSE(others.Ok()) << mistake.error;
        EXPECT_EQ(others.Error(), mistake.error);
        EXPECT_TRUE(others.GetFailure().misuse);
    }
}

TEST(Options, HelpIsAligned) {
    EXPECT_EQ(base::OptionHelp(Line().Table()),
              "  -l           loud\n"
              "  --name NAME  a name\n"
              "  --note TEXT  notes\n"
              "  --count N    how many\n"
              "               times\n");
}

}  // namespace
