// Generated unions: members, tags, conversions, bytes.
#include <aidl/standin/aidltest/Choice.h>
#include <aidl/standin/aidltest/FdChoice.h>
#include <gmock/gmock.h>

#include "parcels.h"

namespace aidl::standin::aidltest {
namespace {

using inner::Point;
using testing::ElementsAre;

TEST(UnionTest, TakesValuesByType) {
    EXPECT_EQ(Choice().get<Choice::number>(), 7) << "starts with its first member";
    Point point;
    point.y = 3;
    Choice choice = point;
    EXPECT_EQ(choice.get<Choice::point>().y, 3);
    choice = std::string("text");
    EXPECT_EQ(choice.get<Choice::text>(), "text");
    choice = Choice::make<Choice::levels>(2, Level::LOW);
    EXPECT_THAT(choice.get<Choice::levels>(), ElementsAre(Level::LOW, Level::LOW));
    choice.set<Choice::number>(12);
    EXPECT_EQ(choice.get<Choice::number>(), 12);
    EXPECT_EQ(Choice::make<Choice::text>().get<Choice::text>(), "");
    static_assert(!std::is_convertible_v<FdChoice, Choice>);
    static_assert(!std::is_convertible_v<void*, Choice>);
}

TEST(UnionTest, CopiesComparesAndPrints) {
    const Choice text = std::string("a");
    Choice copy = text;
    EXPECT_EQ(copy, text);
    copy.get<Choice::text>() = "b";
    EXPECT_LT(text, copy);
    EXPECT_LT(Choice(), text) << "members compare by tag first";
    EXPECT_EQ(text.toString(), "Choice{text: a}");
    EXPECT_EQ(toString(Choice::Tag::pair), "pair");
    EXPECT_EQ(toString(static_cast<Choice::Tag>(9)), "9");
    EXPECT_EQ(ndk::internal::enum_values<Choice::Tag>.size(), 5u);
}

TEST(UnionTest, EveryMemberComesBack) {
    const Choice choices[] = {Choice(-5), Choice(std::string("x")), Choice(Point()),
                              Choice(std::vector<Level>{Level::HIGH, Level::LOW}),
                              Choice(std::array<double, 2>{0.5, -1.0})};
    for (const Choice& sent : choices) {
        const Bytes bytes = BytesOf(sent);
        Choice received;
        ASSERT_EQ(Read(bytes, &received), STATUS_OK) << sent.toString();
        EXPECT_EQ(received, sent) << received.toString();
        for (size_t length = 0; length < bytes.size(); length++) {
            EXPECT_NE(Read(Bytes(&bytes[0], &bytes[length]), &received), STATUS_OK)
                    << sent.toString() << " " << length;
        }
    }
}

TEST(UnionTest, UnknownTagIsABadValue) {
    for (const int32_t tag : {-1, 5, INT32_MAX}) {
        Choice choice;
        EXPECT_EQ(Read(Words({tag, 0}), &choice), STATUS_BAD_VALUE) << tag;
    }
}

TEST(UnionTest, DescriptorsMoveInAndAreClosedWhenReplaced) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    const ndk::ScopedFileDescriptor reader(ends[0]);
    FdChoice choice = ndk::ScopedFileDescriptor(ends[1]);
    FdChoice moved = std::move(choice);
    moved.set<FdChoice::none>(true);
    char c = 0;
    EXPECT_EQ(read(reader.get(), &c, 1), 0) << "the write end is closed";
}

}  // namespace
}  // namespace aidl::standin::aidltest
