// Syntax errors are reported once, at the place where reading stopped.
#include <gmock/gmock.h>

#include "sources.h"

namespace aidlc {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Case {
    const char* text;     // from line 2 on
    const char* message;  // from the line number on
};

class SyntaxErrorTest : public testing::TestWithParam<Case> {};

TEST_P(SyntaxErrorTest, NamesPlaceAndExpectation) {
    Sources sources;
    sources.Add("a/b/T.aidl", GetParam().text);
    EXPECT_THAT(sources.Messages("a/b/T.aidl"),
                ElementsAre(std::string("a/b/T.aidl:") + GetParam().message));
    EXPECT_FALSE(sources.MadeFiles());
}

INSTANTIATE_TEST_SUITE_P(
        All, SyntaxErrorTest,
        testing::Values(
                Case{"parcelable T { int a; /* open", "2:23: comment is not closed: add \"*/\""},
                Case{"parcelable T { String s = \"x;\n}",
                     "2:27: closing \" is missing on this line"},
                Case{"parcelable T {\n\tint # a;\n}", "3:6: unexpected character '#'"},
                Case{"",
                     "2:1: expected 'interface', 'parcelable', 'union' or 'enum', found end of "
                     "file"},
                Case{"parcelable T { int a }", "2:22: expected ';' after a field, found '}'"},
                Case{"parcelable T {} parcelable U {}",
                     "2:17: expected the end of the file after its one type, found 'parcelable'"},
                Case{"interface T { void f(in int a,); }", "2:31: expected an argument after ','"},
                Case{"interface T { void f(@nullable in T t); }",
                     "2:32: the direction 'in' stands before the annotations of a type"},
                Case{"interface T { void f() = 3; }",
                     "2:24: transaction numbers cannot be chosen: they follow the order of the "
                     "methods"},
                Case{"parcelable T { int[][] a; }", "2:21: an array has one dimension only"},
                Case{"@Vintf parcelable T {}",
                     "2:1: unknown annotation '@Vintf': only VintfStability, Backing, nullable and "
                     "utf8InCpp are supported"},
                Case{"@Backing(type=\"short\") enum T { A }",
                     "2:15: an enum is backed by \"byte\", \"int\" or \"long\", not \"short\""},
                Case{"parcelable T { @VintfStability int a; }",
                     "2:32: '@VintfStability' and '@Backing' belong to the declaration of a "
                     "type"}));

TEST(SyntaxTest, PackageComesFirst) {
    Sources sources;
    sources.AddRaw("T.aidl", "parcelable T {}");
    EXPECT_THAT(sources.Messages("T.aidl"),
                ElementsAre("T.aidl:1:1: expected 'package' at the start of the file, found "
                            "'parcelable'"));
}

TEST(SyntaxTest, CommentsBlanksAndTrailingCommasAreFree) {
    Sources sources;
    sources.Add("a/T.aidl", "// line\n/* block */ enum T {\n  A /* 1 */ = 1, // x\n  B,\n}\n");
    EXPECT_THAT(sources.Messages("a/T.aidl"), IsEmpty());
    EXPECT_TRUE(sources.MadeFiles());
}

TEST(SyntaxTest, EndlessNestingIsRefused) {
    Sources sources;
    sources.Add("a/T.aidl", "enum T { A = " + std::string(100000, '(') + "1");
    EXPECT_THAT(sources.Messages("a/T.aidl"),
                ElementsAre(testing::EndsWith("expression is nested too deeply")));
    std::string sum = "1";
    for (int i = 0; i < 100000; i++) {
        sum += "+1";
    }
    sources.Add("a/U.aidl", "enum U { A = " + sum + " }");
    EXPECT_THAT(sources.Messages("a/U.aidl"),
                ElementsAre(testing::EndsWith("expression is too long")));
}

}  // namespace
}  // namespace aidlc
