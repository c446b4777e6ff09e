// Which entry a message or status gets.

#include "host/tools/explanations/explanations.h"

#include <gtest/gtest.h>

#include <set>

namespace explanations {
namespace {

std::string LineFor(const Explanation* found) {
    return found ? std::string(found->lines[0]) : "(none)";
}

TEST(Explanations, EveryLineIsThereOnceWithCauseAndCure) {
    std::set<std::string_view> lines;
    for (const Explanation& entry : Table()) {
        EXPECT_FALSE(entry.cause.empty() || entry.cure.empty()) << entry.lines[0];
        for (const std::string_view line : entry.lines) {
            EXPECT_TRUE(lines.insert(line).second) << line << ": twice";
            EXPECT_EQ(line.find_first_of("*?["), line.npos) << line << ": would be a pattern";
        }
    }
}

TEST(Explanations, AMessageIsMatchedAsAWhole) {
    EXPECT_TRUE(Matches("no … of …", "no file of 3"));
    EXPECT_FALSE(Matches("no … of …", "say no x of y"));
    // The end is the last piece even where it also comes earlier; pieces never overlap.
    EXPECT_TRUE(Matches("a … b", "a b b"));
    EXPECT_FALSE(Matches("ab…bc", "abc"));
}

TEST(Explanations, TheMostLiteralLineOrItsStatusExplainsARun) {
    EXPECT_EQ(LineFor(Explain("Failed to load mapper.zel.so")), "Failed to load …");
    EXPECT_EQ(LineFor(Explain("Failed to lock buffer (nil): 2")), "Failed to lock buffer (nil): …");
    EXPECT_EQ(LineFor(Explain("Failed to lock buffer 0x1: 2")), "Failed to lock buffer …: …");
    EXPECT_EQ(LineFor(Explain("no such line")), "(none)");
    EXPECT_EQ(LineFor(Explain("0")), "(none)");  // a status is no line
    EXPECT_EQ(LineFor(ExplainStatus(139)), "139");
    EXPECT_EQ(LineFor(ExplainStatus(137)), "128 + n");
}

}  // namespace
}  // namespace explanations
