// The page's entries, and which of them a message gets.

#include "host/tools/explanations/explanations.h"

#include <gmock/gmock.h>

#include <sstream>

namespace explanations {
namespace {

constexpr char kPage[] = R"(# A page
### `no entry outside the sections`
## Exit statuses
### `0`

Cause: it ran.

Cure: none is
needed.
### `128 + n`
Cause: a signal.
## Something else
### `nor here`
Cause: of nothing.
## Error lines
Words for the reader.
### `no … of …`

Cause: first line
  and second line.

Not part of it.

Cure: do `this`.
### `no … of id …`
Cure: a cure alone.
## Error lines
### `…: gone`
### `… has left`
Cause: it went.
Cure: fetch it.)";

std::vector<Explanation> Read(std::vector<Explanation> (*read)(std::istream&)) {
    std::istringstream page(kPage);
    return read(page);
}

std::string LineFor(const Explanation* found) {
    return found == nullptr ? "(none)" : found->line;
}

TEST(Explanations, ReadsTheEntriesOfTheirSectionsOnly) {
    const auto entries = Read(ReadExplanations);
    ASSERT_EQ(entries.size(), 4u);
    EXPECT_EQ(entries[0].line, "no … of …");
    EXPECT_EQ(entries[0].cause, "first line and second line.");
    EXPECT_EQ(entries[0].cure, "do `this`.");
    EXPECT_EQ(entries[1].cause, "");
    EXPECT_EQ(entries[1].cure, "a cure alone.");
    for (const size_t shared : {2, 3}) {
        EXPECT_EQ(entries[shared].cause, "it went.");
        EXPECT_EQ(entries[shared].cure, "fetch it.");
    }
}

TEST(Explanations, TheMostLiteralLineExplainsAWholeMessage) {
    const auto entries = Read(ReadExplanations);
    EXPECT_EQ(LineFor(Explain(entries, "no file of id 3")), "no … of id …");
    EXPECT_EQ(LineFor(Explain(entries, "no file of 3")), "no … of …");
    EXPECT_EQ(LineFor(Explain(entries, "allocator: gone")), "…: gone");
    for (const char* other : {"no file", "allocator: gone again", "say no x of y", ""}) {
        EXPECT_EQ(LineFor(Explain(entries, other)), "(none)") << other;
    }
    // The end is the last piece even where it also stands earlier; pieces never overlap.
    EXPECT_TRUE(MatchesLine("a … b", "a b b"));
    EXPECT_TRUE(MatchesLine("… x …", "1 x 2 x 3"));
    EXPECT_FALSE(MatchesLine("ab…bc", "abc"));
}

TEST(Explanations, AStatusIsExplainedByItsNumberOrAsASignal) {
    const auto statuses = Read(ReadExitStatuses);
    ASSERT_EQ(statuses.size(), 2u);
    EXPECT_EQ(statuses[0].cure, "none is needed.");
    EXPECT_EQ(LineFor(ExplainStatus(statuses, 0)), "0");
    EXPECT_EQ(LineFor(ExplainStatus(statuses, 139)), "128 + n");
    EXPECT_EQ(LineFor(ExplainStatus(statuses, 1)), "(none)");
}

}  // namespace
}  // namespace explanations
