// Each fault of a source is reported once, with its place and what is expected or allowed there.
#include <gmock/gmock.h>

#include <regex>
#include <sstream>

#include "sources.h"

namespace aidlc {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

// Line 2 of a file, and the message from its line number on. What is indented goes on with the line
// before it.
constexpr char kRefusals[] = R"(
parcelable T { int a; /* open => 2:23: comment is not closed: add "*/"
parcelable T { int a } => 2:22: expected ';' after a field, found '}'
parcelable T {} parcelable U {} => 2:17: expected the end of the file after its one type, found
    'parcelable'
interface T { void f(in int a,); } => 2:31: expected an argument after ','
interface T { void f(@nullable in T t); } => 2:32: the direction 'in' stands before the annotations
    of a type
interface T { void f() = 3; } => 2:24: transaction numbers cannot be chosen: they follow the order
    of the methods
parcelable T { int[][] a; } => 2:21: an array has one dimension only
@Vintf parcelable T {} => 2:1: unknown annotation '@Vintf': only VintfStability, Backing, nullable
    and utf8InCpp are supported
@Backing(type="short") enum T { A } => 2:15: an enum is backed by "byte", "int" or "long", not
    "short"
parcelable T { @VintfStability int a; } => 2:32: '@VintfStability' and '@Backing' belong to the
    declaration of a type

parcelable IT { Strin s; } => 2:17: unknown type 'Strin': import it or check the spelling
parcelable IT { void v; } => 2:17: a field cannot be void
parcelable IT { @nullable int v; } => 2:27: '@nullable' cannot be applied to int: it is never null
parcelable IT { @utf8InCpp int v; } => 2:28: '@utf8InCpp' belongs to a String, not to int
parcelable IT { List<int> v; } => 2:22: a List holds objects: write int[] instead
parcelable IT { byte[1 << 21] v; } => 2:24: an array of 2097152 elements: the size is 1 to 1048576
@VintfStability parcelable IT { P p; } => 2:33: 'P' is used by a @VintfStability type and must be
    one itself
union IT {} => 2:7: union IT needs at least one member
parcelable IT { @nullable IT[] more; } => 2:32: parcelable IT contains itself
parcelable IT { byte b = 128; } => 2:26: the default 128 does not fit byte
parcelable IT { int i = 1L << 31; } => 2:28: the default 2147483648 does not fit int
parcelable IT { boolean b = 1; } => 2:29: the default of a boolean is true or false
parcelable IT { boolean b = true.x; } => 2:33: expected ';' after a field, found '.'
parcelable IT { float f = 1e39; } => 2:27: the default is not a decimal number that fits float
parcelable IT { double[] d = {0, 0x10}; } => 2:34: the default is not a decimal number that fits
    double
parcelable IT { double d = 1L; } => 2:28: the default is not a decimal number that fits double
parcelable IT { double d = 1e; } => 2:28: the default is not a decimal number that fits double
parcelable IT { char c = 'ab'; } => 2:26: the default of a char is one ASCII character or one escape
    in single quotes: '\n', '\u20ac'
parcelable IT { String s = "\ud800"; } => 2:28: the default of a String is text in double quotes,
    with the escapes \b \f \n \r \t \\ \" \' and \uXXXX only
parcelable IT { E e = E.TWO; } => 2:23: enum E has no enumerator 'TWO'
parcelable IT { int[2] i = {1}; } => 2:29: the default has 1 elements, the array 2
parcelable IT { int a; long a; } => 2:29: field 'a' is declared twice
interface IT { void f(); int f(int a); } => 2:30: method 'f' is declared twice
parcelable IT { int class; } => 2:21: 'class' is a C++ keyword and cannot name a field
parcelable IT { int IT; } => 2:21: 'IT' is the name of the class and cannot name a field
interface IT { void BpT(); } => 2:21: 'BpT' is the name of a generated class and cannot name a
    method
parcelable IT { int descriptor; } => 2:21: 'descriptor' is a member of every generated class and
    cannot name a field
interface IT { void f(P p); } => 2:23: argument 'p' is an array or a parcelable: say in, out or
    inout
interface IT { void f(out int i); } => 2:27: argument 'i' of type int can only be in
interface IT { oneway int f(); } => 2:23: oneway method 'f' must return void
oneway interface IT { void f(out P p); } => 2:34: oneway method 'f' cannot have the out argument 'p'

enum IT { A = 128 } => 2:11: the value 128 of 'A' does not fit the enum's backing type byte
@Backing(type="long") enum IT { A = 0x7fffffffffffffff, B } => 2:57: no value is left for 'B'
enum IT { A = 1 << 32 } => 2:17: a shift by 32 is outside 0..31: give the left side an L suffix for
    64 bits
enum IT { A = 2147483647 + 1 } => 2:26: the result of '+' does not fit int
enum IT { A = -0x80000000 } => 2:15: the negated value does not fit its type
enum IT { A = 9223372036854775808 } => 2:15: '9223372036854775808' does not fit 64 bits
enum IT { A = 12ab } => 2:15: '12ab' is not an integer constant
enum IT { A = 010 } => 2:15: octal constants are not supported: write '010' in decimal or as 0x...
enum IT { A = "x" } => 2:15: an integer constant is expected here
enum IT { A = B } => 2:15: enum IT has no enumerator 'B'
enum IT { A = A + 1 } => 2:11: the value of 'A' depends on itself
)";

void ExpectRefusal(const std::string& text, const std::string& message) {
    Sources sources;
    sources.Add("a/P.aidl", "parcelable P { int x; }");
    sources.Add("a/E.aidl", "enum E { ONE = 1 }");
    sources.Add("a/IT.aidl", text);
    EXPECT_THAT(sources.Messages("a/IT.aidl"), ElementsAre("a/IT.aidl:" + message)) << text;
    EXPECT_FALSE(sources.MadeFiles()) << text;
}

TEST(RefusalTest, SaysWhatIsWrongAndWhere) {
    const std::string table = std::regex_replace(kRefusals, std::regex("\n +"), " ");
    std::istringstream lines(table);
    for (std::string line; std::getline(lines, line);) {
        const size_t arrow = line.find(" => ");
        if (!line.empty()) ExpectRefusal(line.substr(0, arrow), line.substr(arrow + 4));
    }
    ExpectRefusal("parcelable T { String s = \"x;\n}", "2:27: closing \" is missing on this line");
    ExpectRefusal("parcelable T {\n\tint # a;\n}", "3:6: unexpected character '#'");
    ExpectRefusal("",
                  "2:1: expected 'interface', 'parcelable', 'union' or 'enum', found end of file");
}

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
    for (int i = 0; i < 100000; i++) sum += "+1";
    sources.Add("a/U.aidl", "enum U { A = " + sum + " }");
    EXPECT_THAT(sources.Messages("a/U.aidl"),
                ElementsAre(testing::EndsWith("expression is too long")));
}

TEST(RulesTest, AllFaultsOfAFileAreReported) {
    Sources sources;
    sources.Add("a/T.aidl", "parcelable T {\n  Foo a;\n  Bar b;\n  int b;\n}");
    EXPECT_THAT(sources.Messages("a/T.aidl"),
                ElementsAre("a/T.aidl:3:3: unknown type 'Foo': import it or check the spelling",
                            "a/T.aidl:4:3: unknown type 'Bar': import it or check the spelling",
                            "a/T.aidl:5:7: field 'b' is declared twice"));
}

TEST(RulesTest, FaultsOfImportedFilesAreReportedThere) {
    Sources sources;
    sources.Add("a/T.aidl", "import b.U;\nparcelable T { U u; U v; b.U w; }");
    sources.Add("b/U.aidl", "parcelable U { int i }");
    EXPECT_THAT(sources.Messages("a/T.aidl"),
                ElementsAre("b/U.aidl:2:22: expected ';' after a field, found '}'"));
}

TEST(RulesTest, ParcelablesMayNotContainEachOther) {
    Sources sources;
    sources.Add("a/T.aidl", "parcelable T { U u; }");
    sources.Add("a/U.aidl", "union U { int i; T[] t; }");
    EXPECT_THAT(sources.Messages("a/T.aidl"),
                UnorderedElementsAre("a/T.aidl:2:12: parcelable T contains itself through U.t",
                                     "a/U.aidl:2:7: union U contains itself through T.u"));
}

TEST(RulesTest, InterfacesMayReferToEachOther) {
    Sources sources;
    sources.Add("a/IOne.aidl", "interface IOne { ITwo other(IOne self); }");
    sources.Add("a/ITwo.aidl", "interface ITwo { void set(IOne one, in a.P p); }");
    sources.Add("a/P.aidl", "parcelable P { @nullable ITwo two; }");
    EXPECT_THAT(sources.Messages("a/IOne.aidl"), IsEmpty());
}

TEST(RulesTest, PackagesAreNamespacesOfCpp) {
    Sources sources;
    sources.Add("a/new/T.aidl", "parcelable T {}");
    EXPECT_THAT(sources.Messages("a/new/T.aidl"),
                ElementsAre("a/new/T.aidl:1:9: 'new' is a C++ keyword and cannot name a part of a "
                            "package"));
    sources.Add("a/std/T.aidl", "parcelable T {}");
    EXPECT_THAT(sources.Messages("a/std/T.aidl"),
                ElementsAre("a/std/T.aidl:1:9: a package part 'std' would hide C++'s own: rename "
                            "it"));
}

TEST(RulesTest, TwoTypesDoNotMakeOneFile) {
    Sources sources;
    sources.Add("a/Foo.aidl", "parcelable Foo {}");
    sources.Add("a/IFoo.aidl", "interface IFoo {}");
    EXPECT_THAT(sources.MessagesOfAll({"a/Foo.aidl", "a/Foo.aidl"}), IsEmpty());
    EXPECT_THAT(sources.MessagesOfAll({"a/Foo.aidl", "a/IFoo.aidl"}),
                ElementsAre("a/IFoo.aidl:2:11: a.Foo and a.IFoo both make include/aidl/a/BnFoo.h: "
                            "rename one of them"));
    EXPECT_FALSE(sources.MadeFiles());
}

TEST(RulesTest, FileLiesWhereItsNameSays) {
    Sources sources;
    sources.AddRaw("a/T.aidl", "package b;\nparcelable T {}");
    EXPECT_THAT(sources.Messages("a/T.aidl"),
                ElementsAre("a/T.aidl:2:12: type b.T belongs in a file b/T.aidl"));
    EXPECT_THAT(sources.Messages("a/None.aidl"),
                ElementsAre("a/None.aidl:1:1: cannot read a/None.aidl: No such file or directory"));
}

}  // namespace
}  // namespace aidlc
