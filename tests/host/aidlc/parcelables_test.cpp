// Generated parcelables: defaults, text, round trips, what damaged bytes do.
#include <aidl/standin/aidltest/RecordV1.h>
#include <aidl/standin/aidltest/RecordV2.h>

#include "parcels.h"

namespace aidl::standin::aidltest {
namespace {

TEST(ParcelableTest, DefaultsComparisonsText) {
    RecordV2 low;
    EXPECT_EQ(low.toString(),
              "RecordV2{number: 0, text: , added: 1048576, flag: true, small: -128, least: "
              "-9223372036854775807, fine: 0.000000, bigs: [], ratios: [], fines: [], texts: []}");
    RecordV2 high = low;
    high.text = "x";
    EXPECT_TRUE(low < high && low <= low && high >= low && low != high && !(low < low));
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
void ReadBefore(Bytes bytes, Record* record) {
    const auto end = static_cast<int32_t>(bytes.size());
    bytes.resize(bytes.size() + 4, 0x12);
    const ndk::ScopedAParcel parcel = ParcelOf(bytes);
    ASSERT_EQ(record->readFromParcel(parcel.get()), STATUS_OK);
    EXPECT_EQ(AParcel_getDataPosition(parcel.get()), end);
}

TEST(ParcelableTest, RecordsComeBackAlsoFromOlderAndToOlder) {
    RecordV1 older{5, "five"};
    RecordV2 newer;
    ReadBefore(BytesOf(older), &newer);
    EXPECT_EQ(newer.text, "five");
    EXPECT_EQ(newer.added, 1048576) << "what follows the record is not taken for its fields";
    newer.number = 6;
    newer.flag = false;
    newer.small = 7;
    newer.fine = -2.25;
    newer.bigs = {1L << 40};
    newer.ratios = {0.5f, -0.5f};
    newer.fines = {1e300};
    newer.texts = {"", "caf\u00e9 \U0001F4F7"};
    RecordV2 received;
    ReadBefore(BytesOf(newer), &received);
    EXPECT_EQ(received, newer) << received.toString();
    ReadBefore(BytesOf(newer), &older);
    EXPECT_EQ(older.number, 6);
}

}  // namespace
}  // namespace aidl::standin::aidltest
