// What only shows in the generated text: deprecation, versions, headers that must not be included.
#include <gmock/gmock.h>

#include "sources.h"

namespace aidlc {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

TEST(EmitTest, DeprecationNoteIsOnEveryDeclarationOfTheMethod) {
    Sources sources;
    sources.Add("a/IT.aidl",
                "interface IT {\n  /**\n   * Old.\n   *\n   * @deprecated use \"g\",\n   *   it is "
                "bet\\ter.\n   * @param x what\n   */\n  void f(int x);\n  void g(int x);\n}");
    ASSERT_THAT(sources.Messages("a/IT.aidl"), IsEmpty());
    const std::string mark = "__attribute__((deprecated(\"use \\\"g\\\", it is bet\\\\ter.\"))) ";
    EXPECT_THAT(sources.Generated("include/aidl/a/IT.h"),
                HasSubstr("virtual " + mark + "::ndk::ScopedAStatus f(int32_t in_x) = 0;"));
    for (const char* file : {"include/aidl/a/BnT.h", "include/aidl/a/BpT.h"}) {
        EXPECT_THAT(sources.Generated(file), HasSubstr(mark + "::ndk::ScopedAStatus f("));
        EXPECT_THAT(sources.Generated(file), Not(HasSubstr(mark + "::ndk::ScopedAStatus g(")));
    }
}

TEST(EmitTest, OnlyNamedFilesAreGenerated) {
    Sources sources;
    sources.Add("a/T.aidl", "import b.U;\nparcelable T { U u; }");
    sources.Add("b/U.aidl", "parcelable U { int i; }");
    ASSERT_THAT(sources.Messages("a/T.aidl"), IsEmpty());
    EXPECT_THAT(sources.Generated("include/aidl/a/T.h"), HasSubstr("#include <aidl/b/U.h>"));
    EXPECT_THAT(sources.Generated("include/aidl/b/U.h"), IsEmpty());
}

}  // namespace
}  // namespace aidlc
