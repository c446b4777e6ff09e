// Generated enums, parcelables and unions: names, defaults, round trips, what damaged bytes do.
#include <aidl/standin/aidltest/Kinds.h>
#include <aidl/standin/aidltest/RecordV2.h>
#include <gmock/gmock.h>

#include "parcels.h"

namespace aidl::standin::aidltest {
namespace {

using testing::ElementsAre;

RecordV1 MakeRecord(int32_t number, const std::string& text) {
    RecordV1 record;
    record.number = number;
    record.text = text;
    return record;
}

TEST(EnumTest, NamesAndValues) {
    EXPECT_EQ(toString(Level::HIGH), "HIGH");
    EXPECT_EQ(toString(Level::SAME), "MIDDLE") << "of equal values the first name counts";
    EXPECT_EQ(toString(static_cast<Level>(5)), "5");
    EXPECT_EQ(static_cast<int>(Level::NEXT), 17);
    EXPECT_THAT((ndk::internal::enum_values<Level>),
                ElementsAre(Level::LOW, Level::MIDDLE, Level::SAME, Level::NEXT, Level::HIGH));
}

TEST(ParcelableTest, DefaultsComparisonsText) {
    RecordV2 low;
    EXPECT_EQ(low.toString(),
              "RecordV2{number: 0, text: , added: 1048576, flag: true, small: -128, least: "
              "-9223372036854775807, level: HIGH}");
    RecordV2 high = low;
    high.text = "x";
    EXPECT_TRUE(low < high && low <= low && high >= low && low != high && !(low < low));
}

TEST(ParcelableTest, EveryKindOfFieldComesBack) {
    const Kinds sent = {-128,
                        -2.25,
                        Choice(MakeRecord(2, "two")),
                        {1L << 40},
                        {0.5f, -0.5f},
                        {1e300},
                        {"", "x"},
                        {Choice(std::string("caf\u00e9 \U0001F4F7")), Choice()}};
    Kinds received;
    ASSERT_EQ(Read(BytesOf(sent), &received), STATUS_OK);
    EXPECT_EQ(received, sent) << received.toString() << "\n" << sent.toString();
}

TEST(ParcelableTest, SizeWordIsChecked) {
    RecordV1 record;
    for (const int32_t size : {3, 0, -1, INT32_MIN}) {
        EXPECT_EQ(Read(Words({size}), &record), STATUS_BAD_VALUE) << size;
    }
    const ndk::ScopedAParcel parcel = ParcelOf(Words({0, INT32_MAX}));  // start + size overflows
    ASSERT_EQ(AParcel_setDataPosition(parcel.get(), 4), STATUS_OK);
    EXPECT_EQ(record.readFromParcel(parcel.get()), STATUS_BAD_VALUE);
}

// Reads a record that is followed by something else, which must be found behind it.
template <typename Record>
void ReadBefore(const Bytes& bytes, Record* record) {
    const ndk::ScopedAParcel parcel = ParcelOf(bytes);
    AParcel_setDataPosition(parcel.get(), static_cast<int32_t>(bytes.size()));
    AParcel_writeInt32(parcel.get(), 0x1234);
    AParcel_setDataPosition(parcel.get(), 0);
    ASSERT_EQ(record->readFromParcel(parcel.get()), STATUS_OK);
    EXPECT_EQ(AParcel_getDataPosition(parcel.get()), static_cast<int32_t>(bytes.size()));
}

TEST(ParcelableTest, OlderAndNewerRecordsUnderstandEachOther) {
    RecordV1 older = MakeRecord(5, "five");
    RecordV2 newer;
    ReadBefore(BytesOf(older), &newer);
    EXPECT_EQ(newer.text, "five");
    EXPECT_EQ(newer.added, 1048576) << "what follows the record is not taken for its fields";
    newer.number = 6;
    ReadBefore(BytesOf(newer), &older);
    EXPECT_EQ(older.number, 6);
}

TEST(UnionTest, MembersTagsText) {
    EXPECT_EQ(Choice().get<Choice::number>(), 7) << "starts with its first member";
    Choice choice = std::string("text");
    EXPECT_EQ(choice.toString(), "Choice{text: text}");
    EXPECT_LT(Choice(), choice) << "members compare by tag first";
    choice.get<Choice::text>() = "b";
    EXPECT_LT(Choice(std::string("a")), choice);
    choice = Choice::make<Choice::levels>(2, Level::LOW);
    EXPECT_THAT(choice.get<Choice::levels>(), ElementsAre(Level::LOW, Level::LOW));
    choice.set<Choice::number>(12);
    EXPECT_EQ(choice.getTag(), Choice::number);
    EXPECT_EQ(toString(Choice::Tag::levels), "levels");
    EXPECT_EQ(toString(static_cast<Choice::Tag>(9)), "9");
    EXPECT_EQ(ndk::internal::enum_values<Choice::Tag>.size(), 4u);
    static_assert(!std::is_convertible_v<void*, Choice>);
}

TEST(UnionTest, BadBytesLeaveItAsItWas) {
    Choice choice = std::string("kept");
    for (const int32_t tag : {-1, 4, INT32_MAX}) {
        EXPECT_EQ(Read(Words({tag, 0}), &choice), STATUS_BAD_VALUE) << tag;
    }
    const auto record = static_cast<int32_t>(Choice::record);
    EXPECT_EQ(Read(Words({record, 0}), &choice), STATUS_UNEXPECTED_NULL);
    EXPECT_EQ(choice.get<Choice::text>(), "kept");
}

}  // namespace
}  // namespace aidl::standin::aidltest
