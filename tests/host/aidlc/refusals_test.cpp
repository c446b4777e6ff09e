// Each fault of a source is reported with its place and what is expected or allowed there.
#include <gmock/gmock.h>

#include <sstream>

#include "sources.h"

namespace aidlc {
namespace {

using testing::StartsWith;

// Line 3 of a file, and the start of the message from its column on.
constexpr char kRefusals[] = R"(
parcelable T { int a; /* open => 23: comment is not closed: add "*/"
parcelable T { int a } => 22: expected ';' after a field, found '}'
interface IT { void f(in int a,); } => 32: expected an argument after ','
@Backing(type="int) enum T { A } => 15: closing " is missing on this line
@Backing(type="int") union T {} => 1: enums, and only they, have @Backing(type="int")
parcelable T { @nullable P p; } => 16: '@nullable' is not supported here
parcelable T { int[][] a; } => 21: an array of arrays is not supported here
interface IT { void f() = 3; } => 25: a transaction number of one's own is not supported here
parcelable T { int d = 010; } => 24: '010' is not supported here: write an integer, in decimal
enum T { A = B, B } => 14: 'B' is not an enumerator above this place
enum T { A = 1L << 31 } => 10: the value 2147483648 of 'A' does not fit 32 bits
enum T { A = 1 << 32 } => 16: a shift by 32 is outside 0..31 (1L instead of 1 has 64 bits)
enum T { A = 0x7fffffff, B } => 26: no value is left for 'B'

parcelable T { IBinder b; } => 16: unknown type a.IBinder: it is not built in, and no -I folder
parcelable T { int[2] v; } => 16: a fixed array of int is not supported here
parcelable T { ITwo two; } => 16: a field of type ITwo is not supported here
parcelable T { P p; U u; } => 12: T contains itself through U.t
union T {} => 7: T needs at least one member
parcelable T { int[] i = 1; } => 26: a default of an array is not supported here
parcelable T { byte b = 128; } => 25: the default is not an integer of 8 bits
parcelable T { boolean b = 1; } => 28: the default of a boolean is true or false
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
    sources.Add("a/E.aidl", "enum E { ONE = 1 }");
    sources.Add("a/ITwo.aidl", "interface ITwo {}");
    sources.Add("a/U.aidl", "union U { int i; T[] t; }");
    std::istringstream lines(kRefusals);
    for (std::string line; std::getline(lines, line);) {
        if (line.empty()) continue;
        const size_t arrow = line.find(" => ");
        const std::string text = line.substr(0, arrow);
        const std::string name = text.find(" IT ") != std::string::npos ? "a/IT.aidl" : "a/T.aidl";
        sources.Add(name, text);
        EXPECT_THAT(sources.Compile(name), StartsWith(name + ":3:" + line.substr(arrow + 4)));
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

TEST(RefusalTest, FilesPackagesStability) {
    Sources sources;
    EXPECT_EQ(sources.Compile("a/T.aidl"), "cannot read a/T.aidl: No such file or directory");
    sources.Add("std/T.aidl", "parcelable U {}");
    EXPECT_EQ(sources.Compile("std/T.aidl"),
              "std/T.aidl:3:12: type std.U belongs in a file std/U.aidl");
    std::ofstream(sources.Path("std/T.aidl")) << "package std; parcelable T {}";
    EXPECT_EQ(sources.Compile("std/T.aidl"),
              "std/T.aidl:1:25: a type without @VintfStability is not supported here");
}

}  // namespace
}  // namespace aidlc
