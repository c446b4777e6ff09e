// Files: read whole, written all or nothing; the set of source files and its chart.

#include <gmock/gmock.h>
#include <limits.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <system/camera_metadata.h>
#include <unistd.h>

#include "host/tools/offlineframes/compare.h"
#include "host/tools/offlineframes/frame_view.h"
#include "host/tools/offlineframes/resample.h"
#include "host/tools/offlineframes/source_set.h"
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
    for (const auto& [name, reason] :
         {std::pair("pipe", "not a regular file"), {"huge", "more than"}, {"empty", "is empty"}}) {
        EXPECT_THAT(errorOf(readFile(folder.path(name))),
                    AllOf(HasSubstr(folder.path(name)), HasSubstr(reason)));
    }
}

TEST(FileIo, KeepsOrReplacesAnExistingRegularFileAsAsked) {
    const TestFolder folder;
    const std::string name(NAME_MAX, 'n');
    const std::string path = folder.file(name, {1, 2, 3});
    EXPECT_THAT(errorOf(writeFile(path, {4}, Existing::kKeep)), HasSubstr("--force"));
    EXPECT_THAT(valueOf(readFile(path)), ElementsAre(1, 2, 3));
    folder.file(name, {4});
    EXPECT_THAT(valueOf(readFile(path)), ElementsAre(4));
    ASSERT_EQ(symlink("/dev/null", folder.path("link").c_str()), 0);
    EXPECT_THAT(errorOf(writeFile(folder.path("link"), {1}, Existing::kReplace)),
                HasSubstr("not a regular file"));
    EXPECT_THAT(folder.names(), ElementsAre("link", name));  // and nothing temporary
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

TEST(Sources, AreMadeOnceAndShowTheSameScene) {
    const TestFolder folder;
    const std::string camera = folder.path("camera");
    const std::string frames = camera + "/offlinecameratest/";
    const std::string made = valueOf(makeSources(camera, std::nullopt));
    EXPECT_THAT(made, AllOf(HasSubstr("mmf_fd.yuv: made, 491520 bytes"),
                            HasSubstr("4096_3072_RAW10.raw: made, 15728640 bytes")));
    const Picture raw = valueOf(viewFile(frames + "4096_3072_RAW10.raw", {})).picture;
    const Picture yuv = valueOf(viewFile(frames + "4000_3000_NV12.yuv", {})).picture;
    // 29 dB, the mosaic's losses at edges; two pixels beside it would be 17 dB.
    EXPECT_GT(valueOf(comparePictures(centreCrop(raw, {4000, 3000}), yuv)).psnr, 27);

    const Bytes dump = valueOf(readFile(camera + "/metadata/original_dump.bin"));
    const auto* const blob = reinterpret_cast<const camera_metadata_t*>(dump.data());
    camera_metadata_ro_entry_t entry = {};
    EXPECT_EQ(find_camera_metadata_ro_entry(blob, ANDROID_JPEG_ORIENTATION, &entry), 0);
    // A second run finds everything and changes nothing, not even a user's own file.
    valueOf(writeFile(frames + "mmf_fd.yuv", {1, 2, 3}, Existing::kReplace));
    EXPECT_THAT(valueOf(makeSources(camera, std::nullopt)), testing::Not(HasSubstr("made")));
    EXPECT_THAT(valueOf(readFile(frames + "mmf_fd.yuv")), ElementsAre(1, 2, 3));
}

}  // namespace
}  // namespace offlineframes
