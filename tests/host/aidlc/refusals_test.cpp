// Each fault of a source is reported with its place and what is expected or allowed there.
#include <gmock/gmock.h>

#include <sstream>

#include "sources.h"

namespace aidlc {
namespace {

// Line 3 of a file, and the start of the message from its column on. A line that starts with '{' is
// the body of an enum.
constexpr char kRefusals[] = R"(
parcelable T { int a; /* open => 23: comment is not closed: add "*/"
parcelable T { int a } => 22: expected ';' after a field, found '}'
parcelable T { int a; => 22: expected '}' to close what was opened, found end of file
interface IT { void f(in int a,); } => 32: expected an argument after ','
@Backing(type="int) enum T { A } => 15: closing " is missing on this line
enum T { A } => 6: enums, and only they, have @Backing(type="int") or "long"
parcelable T { @nullable P p; } => 16: '@nullable' is not supported here
parcelable T { List<P> p; } => 20: List<...> is not supported here
parcelable T { const int A = 1; } => 16: 'const' is not supported here
parcelable T { int[][] a; } => 21: an array of arrays is not supported here
interface IT { void f() = 3; } => 25: a transaction number of one's own is not supported here
parcelable T { double d = 1.5; } => 27: '1.5' is not supported here: write an integer, in decimal
parcelable T { int d = 010; } => 24: '010' is not supported here: write an integer, in decimal
{ A = 1 + 2 } => 9: expected ',' or '}' after an enumerator, found '+'
{ A = B, B } => 7: 'B' is not an enumerator above this place
{ A = 1L << 31 } => 3: the value 2147483648 of 'A' does not fit 32 bits
{ A = 1 << 32 } => 9: a shift by 32 is outside 0..31 (1L instead of 1 has 64 bits)
{ A = 0x7fffffff, B } => 19: no value is left for 'B'

parcelable T { IBinder b; } => 16: unknown type a.IBinder: it is not built in, and no -I folder
parcelable T { void v; } => 16: only a result can be void
parcelable T { int[2] v; } => 16: a fixed array of int is not supported here
parcelable T { ITwo two; } => 16: a field of type ITwo is not supported here
parcelable T { P p; T[] more; } => 12: T contains itself through T.more
union T {} => 7: T needs at least one member
parcelable T { int[] i = 1; } => 26: a default of an array is not supported here
parcelable T { byte b = 128; } => 25: the default is not an integer of 8 bits
parcelable T { boolean b = 1; } => 28: the default of a boolean is true or false
parcelable T { E e = E.TWO; } => 22: the default is not an enumerator E.X
parcelable T { int a; long a; } => 28: field 'a' is declared twice
parcelable T { int class; } => 20: 'class' is a C++ keyword and cannot name a field
interface IT { void BpT(); } => 21: 'BpT' has a meaning in the generated code: rename the method
interface IT { void f(P p); } => 23: argument 'p' is an array or a parcelable: say in or out
interface IT { void f(out int i); } => 27: argument 'i' of type int can only be in
interface IT { oneway int f(); } => 23: oneway method 'f' must return void
oneway interface IT { void f(out P p); } => 34: argument 'p' of a oneway method cannot be out
)";

TEST(RefusalTest, SaysWhatIsWrongAndWhere) {
    Sources sources;
    sources.Add("a/P.aidl", "parcelable P { int x; }");
    sources.Add("a/E.aidl", "@Backing(type=\"int\") enum E { ONE = 1 }");
    sources.Add("a/ITwo.aidl", "interface ITwo {}");
    std::istringstream lines(kRefusals);
    for (std::string line; std::getline(lines, line);) {
        if (line.empty()) continue;
        const size_t arrow = line.find(" => ");
        const std::string head = line[0] == '{' ? "@Backing(type=\"int\") enum T" : "";
        const std::string text = head + line.substr(0, arrow);
        const std::string name = text.find(" IT ") != std::string::npos ? "a/IT.aidl" : "a/T.aidl";
        sources.Add(name, head + (head.empty() ? "" : "\n") + line.substr(0, arrow));
        const std::string place = name + (head.empty() ? ":3:" : ":4:");
        EXPECT_THAT(sources.Compile(name), testing::StartsWith(place + line.substr(arrow + 4)));
    }
}

TEST(RefusalTest, AllFilesThatAreReadAreChecked) {
    Sources sources;
    sources.Add("b/U.aidl", "parcelable U { int i }");
    sources.Add("a/T.aidl", "parcelable T { b.U u; Bar b; Bar c; int b; }");
    EXPECT_EQ(sources.Compile("a/T.aidl"),
              "b/U.aidl:3:22: expected ';' after a field, found '}'\n"
              "a/T.aidl:3:23: unknown type a.Bar: it is not built in, and no -I folder has its "
              "file\n"
              "a/T.aidl:3:41: field 'b' is declared twice");
}

TEST(RefusalTest, FilesHeadsAndPackages) {
    Sources sources;
    EXPECT_EQ(sources.Compile("a/T.aidl"), "cannot read a/T.aidl: No such file or directory");
    sources.Add("a/std/T.aidl", "parcelable U {}");
    EXPECT_EQ(sources.Compile("a/std/T.aidl"),
              "a/std/T.aidl:3:12: type a.std.U belongs in a file a/std/U.aidl");
    sources.Add("a/std/T.aidl", "parcelable T {}");
    EXPECT_EQ(sources.Compile("a/std/T.aidl"),
              "a/std/T.aidl:1:9: 'std' has a meaning in the generated code: rename the part of a "
              "package");
    std::ofstream(sources.Path("a/std/T.aidl")) << "package a.std; parcelable T {}";
    EXPECT_EQ(sources.Compile("a/std/T.aidl"),
              "a/std/T.aidl:1:27: a type without @VintfStability is not supported here");
}

}  // namespace
}  // namespace aidlc
