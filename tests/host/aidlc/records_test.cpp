// Generated enums and parcelables: defaults, text, round trips, and what damaged bytes do.
#include <aidl/standin/aidltest/Defaults.h>
#include <aidl/standin/aidltest/Everything.h>
#include <aidl/standin/aidltest/Nothing.h>
#include <aidl/standin/aidltest/Objects.h>
#include <aidl/standin/aidltest/RecordV1.h>
#include <aidl/standin/aidltest/RecordV2.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cmath>
#include <limits>

#include "parcels.h"

namespace aidl::standin::aidltest {
namespace {

using inner::Point;
using inner::Wide;
using testing::ElementsAre;

Point MakePoint(int32_t x, int32_t y) {
    Point point;
    point.x = x;
    point.y = y;
    return point;
}

Everything MakeEverything() {
    Everything e;
    e.flag = true;
    e.small = -128;
    e.letter = u'\u20ac';
    e.number = -2;
    e.big = std::numeric_limits<int64_t>::min();
    e.ratio = 1.5f;
    e.fine = -2.25;
    e.text = "caf\u00e9 \U0001F4F7";
    e.level = Level::HIGH;
    e.tiny = Tiny::MINUS;
    e.wide = Wide::SECOND;
    e.point = MakePoint(1, 2);
    e.choice = std::string("chosen");
    e.flags = {true, false, true};
    e.bytes = {0, 127, 128, 255, 1};
    e.letters = {u'a', u'\uffff'};
    e.numbers = {1, -1};
    e.bigs = {1L << 40};
    e.ratios = {0.5f, -0.5f};
    e.fines = {1e300};
    e.texts = {"", "x"};
    e.levels = {Level::LOW, Level::SAME};
    e.tinies = {Tiny::ONE, Tiny::MINUS, Tiny::ZERO};
    e.wides = {Wide::FIRST};
    e.points = {MakePoint(3, 4), MakePoint(5, 6)};
    e.choices = {Choice(MakePoint(7, 8)), Choice(), Choice(std::vector<Level>{Level::LOW})};
    e.fixedBytes = {9, 8, 7, 6, 5};
    e.fixedPoints = {MakePoint(9, 10), MakePoint(11, 12)};
    e.textList = {"one", "two"};
    e.pointList = {MakePoint(13, 14)};
    e.maybeText = "there";
    e.maybePoint = MakePoint(15, 16);
    e.maybeNumbers = {17, 18};
    e.maybeTexts = {"there", std::nullopt, ""};
    e.maybePoints = {std::nullopt, MakePoint(19, 20)};
    e.maybeFixed = {21, 22};
    e.last = 23;
    return e;
}

TEST(EnumTest, NamesAndValues) {
    EXPECT_EQ(toString(Level::HIGH), "HIGH");
    EXPECT_EQ(toString(Level::SAME), "MIDDLE") << "of equal values the first name counts";
    EXPECT_EQ(toString(static_cast<Level>(5)), "5");
    EXPECT_EQ(toString(static_cast<Tiny>(-7)), "-7") << "a byte is a number, not a character";
    EXPECT_THAT((ndk::internal::enum_values<Level>),
                ElementsAre(Level::LOW, Level::MIDDLE, Level::SAME, Level::HIGH));
    static_assert(sizeof(Tiny) == 1 && sizeof(Level) == 4 && sizeof(Wide) == 8);
}

TEST(ParcelableTest, DefaultsAreThoseOfTheSource) {
    const Defaults d;
    EXPECT_TRUE(d.flag);
    EXPECT_EQ(d.small, -3);
    EXPECT_EQ(d.letter, u'x');
    EXPECT_EQ(d.quote, u'\'');
    EXPECT_EQ(d.euro, u'\u20ac');
    EXPECT_EQ(d.number, 1048576);
    EXPECT_EQ(d.big, 78187493530);
    EXPECT_EQ(d.ratio, 0.5f);
    EXPECT_THAT(d.ratios, ElementsAre(1.0f, 1.5f, -5.0f, 16777216.0f));
    EXPECT_EQ(d.fine, -2.0);
    EXPECT_THAT(d.fines, ElementsAre(1e300, 0.1, 0.0));
    EXPECT_TRUE(std::signbit(d.fines[2]));
    EXPECT_EQ(d.text, "two \"words\"\n\u20ac");
    EXPECT_EQ(d.level, Level::HIGH);
    EXPECT_EQ(d.wide, Wide::SECOND);
    EXPECT_THAT(d.numbers, ElementsAre(1, -2, 2147483647));
    EXPECT_THAT(d.bytes, ElementsAre(1, 255));
    EXPECT_THAT(d.words, ElementsAre("a", "b"));
    EXPECT_THAT(d.levels, ElementsAre(Level::LOW, Level::MIDDLE));
    EXPECT_THAT(d.fixed, ElementsAre(7, 8, 9));
    EXPECT_THAT(d.zeros, ElementsAre(0, 0));
    EXPECT_EQ(d.tiny, Tiny::ZERO);
}

TEST(ParcelableTest, ComparesAndPrintsItsFieldsInOrder) {
    const Point low = MakePoint(1, 9);
    const Point high = MakePoint(2, -2);
    EXPECT_TRUE(low < high && low <= low && high >= low && low != high && !(low < low));
    EXPECT_EQ(high.toString(), "Point{x: 2, y: -2}");
    EXPECT_EQ(Nothing().toString(), "Nothing{}");
    static_assert(!std::is_copy_constructible_v<Objects> && !std::is_copy_assignable_v<FdChoice>);
}

TEST(ParcelableTest, EveryKindOfFieldComesBack) {
    const Everything sent = MakeEverything();
    Everything received;
    ASSERT_NE(received, sent);
    ASSERT_EQ(Read(BytesOf(sent), &received), STATUS_OK);
    EXPECT_EQ(received, sent) << received.toString() << "\n" << sent.toString();
}

TEST(ParcelableTest, NullReplacesWhatWasThere) {
    const Everything sent;  // all @nullable fields are null
    Everything received = MakeEverything();
    ASSERT_EQ(Read(BytesOf(sent), &received), STATUS_OK);
    EXPECT_EQ(received, sent) << received.toString();
    EXPECT_EQ(received.maybeText, std::nullopt);
}

TEST(ParcelableTest, EveryTruncationIsAnError) {
    const Bytes whole = BytesOf(MakeEverything());
    for (size_t length = 0; length < whole.size(); length++) {
        Everything received;
        EXPECT_NE(Read(Bytes(&whole[0], &whole[length]), &received), STATUS_OK)
                << "of " << whole.size() << " bytes only " << length;
    }
}

// A body that ends early by its own size word is what an older sender makes.
TEST(ParcelableTest, EveryEarlierEndIsTakenOrRefusedAndNothingIsReadBehindIt) {
    const Bytes whole = BytesOf(MakeEverything());
    size_t taken = 0;
    for (size_t size = 4; size <= whole.size(); size += 4) {
        Bytes bytes = whole;
        PutWord(&bytes, 0, static_cast<int32_t>(size));
        const ndk::ScopedAParcel parcel = ParcelOf(bytes);
        Everything received;
        if (received.readFromParcel(parcel.get()) == STATUS_OK) {
            taken++;
            EXPECT_EQ(AParcel_getDataPosition(parcel.get()), static_cast<int32_t>(size));
            EXPECT_EQ(received.last, size == whole.size() ? 23 : 0);
        }
    }
    EXPECT_GE(taken, 37u) << "at least the ends of the fields";
}

TEST(ParcelableTest, NoWordMakesTheReaderCrashOrAllocateWildly) {
    const Bytes whole = BytesOf(MakeEverything());
    for (size_t offset = 0; offset + 4 <= whole.size(); offset += 4) {
        for (const int32_t word : {-2, -1, 0, 2, 0x7ffffff0, 0x7fffffff, INT32_MIN}) {
            Bytes bytes = whole;
            PutWord(&bytes, offset, word);
            Everything received;
            // What was accepted can be sent on.
            if (Read(bytes, &received) == STATUS_OK) BytesOf(received);
        }
    }
}

TEST(ParcelableTest, SizeWordIsChecked) {
    for (const int32_t size : {3, 0, -1, INT32_MIN}) {
        Nothing nothing;
        EXPECT_EQ(Read(Words({size}), &nothing), STATUS_BAD_VALUE) << size;
    }
    const ndk::ScopedAParcel parcel = ParcelOf(Words({0, INT32_MAX}));  // start + size overflows
    ASSERT_EQ(AParcel_setDataPosition(parcel.get(), 4), STATUS_OK);
    Nothing nothing;
    EXPECT_EQ(nothing.readFromParcel(parcel.get()), STATUS_BAD_VALUE);
}

TEST(ParcelableTest, OlderAndNewerRecordsUnderstandEachOther) {
    RecordV1 older;
    older.number = 5;
    older.text = "five";
    Bytes bytes = BytesOf(older);
    AppendWord(&bytes, 0x1234);
    const ndk::ScopedAParcel fromOlder = ParcelOf(bytes);
    RecordV2 newer;
    ASSERT_EQ(newer.readFromParcel(fromOlder.get()), STATUS_OK);
    EXPECT_EQ(newer.text, "five");
    EXPECT_EQ(newer.added, 42);
    EXPECT_THAT(newer.more, ElementsAre(1));
    int32_t next = 0;
    ASSERT_EQ(AParcel_readInt32(fromOlder.get(), &next), STATUS_OK);
    EXPECT_EQ(next, 0x1234) << "what follows the record is not taken for its fields";

    newer.number = 6;
    newer.more = {7, 8, 9};
    bytes = BytesOf(newer);
    AppendWord(&bytes, 0x1234);
    const ndk::ScopedAParcel fromNewer = ParcelOf(bytes);
    ASSERT_EQ(older.readFromParcel(fromNewer.get()), STATUS_OK);
    EXPECT_EQ(older.number, 6);
    ASSERT_EQ(AParcel_readInt32(fromNewer.get(), &next), STATUS_OK);
    EXPECT_EQ(next, 0x1234) << "unknown fields are skipped";
}

TEST(ParcelableTest, NullWhereNoneMayBe) {
    // A record's text and a record inside a union, each null.
    RecordV1 record;
    EXPECT_EQ(Read(Words({12, 1, -1}), &record), STATUS_UNEXPECTED_NULL);
    Choice choice;
    EXPECT_EQ(Read(Words({static_cast<int32_t>(Choice::point), 0}), &choice),
              STATUS_UNEXPECTED_NULL);
    EXPECT_EQ(choice.getTag(), Choice::number) << "a failed read leaves the union as it was";
}

Objects MakeObjects(const char* path) {
    Objects objects;
    objects.fd = ndk::ScopedFileDescriptor(open(path, O_RDONLY | O_CLOEXEC));
    objects.fds.emplace_back(open(path, O_RDONLY | O_CLOEXEC));
    objects.binder = ndk::SpAIBinder(nullptr);
    objects.choice.set<FdChoice::fd>(open(path, O_RDONLY | O_CLOEXEC));
    return objects;
}

TEST(ObjectsTest, WriteRefusesMissingObjects) {
    const ndk::ScopedAParcel parcel(AParcel_create());
    EXPECT_EQ(MakeObjects("/dev/null").writeToParcel(parcel.get()), STATUS_UNEXPECTED_NULL)
            << "the binder is missing";
    EXPECT_EQ(Objects().writeToParcel(parcel.get()), STATUS_UNEXPECTED_NULL)
            << "the descriptor is missing";
}

}  // namespace
}  // namespace aidl::standin::aidltest
