// Constant expressions: values and types, seen through the enumerators they define.
#include <gmock/gmock.h>

#include "sources.h"

namespace aidlc {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

TEST(ConstantsTest, HaveTheirValues) {
    const std::pair<const char*, const char*> cases[] = {
            {"2147483648", "2147483648L"},
            {"0xffffffff", "-1L"},
            {"0xffffffffL", "4294967295L"},
            {"0xFFFFFFFFF", "68719476735L"},
            {"0xffffffffffffffff", "-1L"},
            {"0x8000000000000000", "-9223372036854775807L - 1"},
            {"1 | 2 ^ 3 & 2", "1L"},       // & before ^ before |
            {"1 << 2 + 1", "8L"},          // + before <<
            {"2 + 3 * 4", "14L"},          // * before +
            {"10 - 4 - 3", "3L"},          // from the left
            {"-8 >> 1", "-4L"},            // keeps the sign
            {"-~-+5", "-4L"},              // inner first: ~(-5) is 4
            {"0xf << 28", "-268435456L"},  // an int loses the upper bits
            {"0xffffL << 48", "-281474976710656L"},
            {"1L << 63", "-9223372036854775807L - 1"},
            {"2147483647L + 1", "2147483648L"},
    };
    for (const auto& [expression, value] : cases) {
        Sources sources;
        sources.Add("a/T.aidl",
                    std::string("@Backing(type=\"long\") enum T { X = ") + expression + " }");
        ASSERT_THAT(sources.Messages("a/T.aidl"), IsEmpty());
        EXPECT_THAT(sources.Generated("include/aidl/a/T.h"),
                    HasSubstr(std::string(" X = ") + value + ",\n"));
    }
}

TEST(ConstantsTest, EnumeratorsReferToEachOther) {
    Sources sources;
    sources.Add("a/Shift.aidl", "@Backing(type=\"int\") enum Shift { LOW = 4, HIGH = LOW * 2 }");
    sources.Add("b/T.aidl",
                "import a.Shift;\n@Backing(type=\"int\") enum T {\n"
                "  LATE = EARLY | 1, EARLY = 1 << Shift.LOW, NEXT, FULL = a.Shift.HIGH, AFTER }");
    ASSERT_THAT(sources.Messages("b/T.aidl"), IsEmpty());
    EXPECT_THAT(sources.Generated("include/aidl/b/T.h"),
                HasSubstr("    LATE = 17,\n    EARLY = 16,\n    NEXT = 17,\n    FULL = 8,\n"
                          "    AFTER = 9,\n"));
}

}  // namespace
}  // namespace aidlc
