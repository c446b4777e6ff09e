// Reading whole files, writing all or nothing.

#include "host/tools/offlineframes/file_io.h"

#include <gmock/gmock.h>
#include <limits.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "test_support.h"

namespace offlineframes {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

TEST(FileIo, RefusesWhatIsNotAReadableFileNamingIt) {
    const TestFolder folder;
    ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0600), 0);
    ASSERT_EQ(truncate(folder.file("huge", {1}).c_str(), static_cast<off_t>(kMaxFileBytes) + 1), 0);
    ASSERT_EQ(truncate(folder.file("empty", {1}).c_str(), 0), 0);
    const struct {
        const char* name;
        const char* reason;
    } cases[] = {
            {"missing", "No such file"},    {".", "not a regular file"},
            {"pipe", "not a regular file"}, {"huge", "more than"},
            {"empty", "is empty"},
    };
    for (const auto& c : cases) {
        EXPECT_THAT(errorOf(readFile(folder.path(c.name))),
                    AllOf(HasSubstr(folder.path(c.name)), HasSubstr(c.reason)));
    }
}

TEST(FileIo, KeepsOrReplacesAnExistingFileAsAsked) {
    const TestFolder folder;
    const std::string path = folder.path("frame.raw");
    ASSERT_TRUE(writeFile(path, {1, 2, 3}, Existing::kKeep).ok());
    EXPECT_THAT(errorOf(writeFile(path, {4}, Existing::kKeep)), HasSubstr("--force"));
    EXPECT_THAT(readFile(path).value(), ElementsAre(1, 2, 3));
    ASSERT_TRUE(writeFile(path, {4}, Existing::kReplace).ok());
    EXPECT_THAT(readFile(path).value(), ElementsAre(4));
    // No temporary name is left.
    EXPECT_THAT(folder.names(), ElementsAre("frame.raw"));
}

// The limit's signal ends the process in the midst of the write, as a Ctrl-C may.
TEST(FileIo, LeavesNothingWhenASignalEndsTheProgram) {
    const TestFolder folder;
    const auto writeBeyondTheLimit = [&] {
        const rlimit limit = {10'000, 10'000};
        setrlimit(RLIMIT_FSIZE, &limit);
        static_cast<void>(writeFile(folder.path("frame"), Bytes(20'000), Existing::kKeep));
        _exit(0);
    };
    EXPECT_EXIT(writeBeyondTheLimit(), testing::KilledBySignal(SIGXFSZ), "");
    EXPECT_THAT(folder.names(), ElementsAre());
}

TEST(FileIo, NamesMayBeAsLongAsTheFileSystemAllows) {
    const TestFolder folder;
    const std::string name(NAME_MAX, 'n');
    valueOf(writeFile(folder.path(name), {1}, Existing::kKeep));
    EXPECT_THAT(folder.names(), ElementsAre(name));
}

TEST(FileIo, ReplacesOnlyRegularFiles) {
    const TestFolder folder;
    ASSERT_EQ(symlink("/dev/null", folder.path("link").c_str()), 0);
    ASSERT_EQ(mkdir(folder.path("folder").c_str(), 0700), 0);
    for (const char* name : {"link", "folder"}) {
        EXPECT_THAT(errorOf(writeFile(folder.path(name), {1}, Existing::kReplace)),
                    HasSubstr("not a regular file"));
    }
    EXPECT_THAT(folder.names(), ElementsAre("folder", "link"));
}

}  // namespace
}  // namespace offlineframes
