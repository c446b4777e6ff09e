// Commands run by the real deviceshell: what they see, how they end, and that nothing is left.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "tests/end_to_end/device_run.h"

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

namespace end_to_end {
namespace {

namespace fs = std::filesystem;

const Words kBare = {"--no-service", "--no-allocator"};

class Deviceshell : public ::testing::Test {
  protected:
    // deviceshell with the test's folder as data folder.
    Words Device(const Words& command, const Words& options = kBare) const {
        return Joined({{DEVICESHELL, "--data", m_folder}, options, command});
    }

    Words Script(const std::string& script) const { return Device({"sh", "-c", script}); }

    // A script in place of the service.
    std::string AddProgram(const std::string& path, const std::string& script) const {
        std::ofstream(path) << "#!/bin/sh\n" << script << "\n";
        chmod(path.c_str(), 0755);
        return path;
    }

    const TemporaryFolder m_temporary{"device shell"};
    const std::string m_folder = m_temporary.Path();
    // A command word that only this test's processes have.
    const std::string m_mark = "9" + std::to_string(getpid()) + "00001";
};

TEST_F(Deviceshell, PassesArgumentsOutputAndStatusThrough) {
    const struct {
        Words words;
        int status;
        const char* out;
        const char* err;  // a part of it
    } cases[] = {{Device({"printf", "%s|", "a b", "", "$x", "--help"}), 0, "a b||$x|--help|", ""},
                 {Script("echo out; echo err >&2; exit 7"), 7, "out\n", "err\n"},
                 {Script("kill -SEGV $$"), 128 + SIGSEGV, "", ""},
                 {Device({"/etc/passwd"}), 126, "", ""},
                 {Device({"no-such-command"}), 127, "", "no-such-command"}};
    for (const auto& [words, status, out, err] : cases) {
        const Finished run = RunProgram(words);
        EXPECT_EQ(run.status, status) << words.back();
        EXPECT_EQ(run.out, out);
        EXPECT_THAT(run.err, HasSubstr(err));
    }
    EXPECT_TRUE(fs::is_empty(m_folder)) << "the crash left a core file";
}

TEST_F(Deviceshell, RefusesBadUsageAndStartsNothing) {
    const struct {
        Words options;
        const char* said;
    } cases[] = {
            {{"--bogus"}, "unknown option --bogus"},
            {{"--log="}, "option --log needs a value"},
            {{"--no-service", "--service", "s"}, "--no-service and --service exclude each other"},
            {{"--run-record", "r"}, "--run-record is for a shell"},
            {{"--service", "A=b no-such x"}, "A=b no-such x: no such program"},
            {{"--service", "/etc/passwd"}, "/etc/passwd: no program, as it is not executable"},
            {{"--log", "/no/such/folder/log"}, "/no/such/folder/log"},
            {{"--data", "/no/such/folder"}, "/no/such/folder: no such folder"},
            {{"--fault", "lendx"}, "unknown fault 'lendx'"},
            {{"--fault", "lend", "--fault=lend=17"}, "--fault lend=17: refused by "},
            {{"--fault", "bad-handle", "--fault", "bad-handle"}, "--fault bad-handle: refused by "},
            {{"--fault", "lend", "--no-service"}, "--fault lend: its program is left out"},
            {{"--fault", "lend", "--service", "/bin/cat"}, "of the reference service, not of "}};
    for (const auto& bad : cases) {
        const Finished run = RunProgram(Device({"touch", "/data/vendor/camera/ran"}, bad.options));
        EXPECT_EQ(run.status, 2) << bad.said;
        EXPECT_THAT(run.err, HasSubstr(bad.said));
        EXPECT_TRUE(fs::is_empty(m_folder)) << bad.said;
    }
}

TEST_F(Deviceshell, TheDataFolderIsTheOnlyPlaceToWrite) {
    const Finished run = RunProgram(
            Script("echo text > /data/vendor/camera/file\n"
                   "for place in / /usr /tmp /data /vendor/bin /vendor/lib64 '" +
                   m_folder +
                   "'; do\n"
                   "    { echo text > \"$place/outside\"; } 2> /dev/null && echo wrote $place\n"
                   "done\n"
                   "stat -c %a /binder\n"));
    EXPECT_EQ(run.out, "700\n");
    EXPECT_EQ(ReadFile(m_folder + "/file"), "text\n");
    EXPECT_FALSE(fs::exists(m_folder + "/outside"));
}

// On a host that has folders where the device has its own places; all else in them stays visible.
// bubblewrap itself needs the host's /tmp.
TEST_F(Deviceshell, KeepsTheHostsOwnDataAndVendorFoldersVisible) {
    const std::string build = fs::path(DEVICESHELL).parent_path().parent_path();
    const Finished run = RunProgram(
            {"sh", "-c",
             "for path in /usr /etc /bin /lib /lib64; do\n"
             "    set -- --ro-bind-try $path $path \"$@\"\n"
             "done\n"
             "exec bwrap --tmpfs / --proc /proc --dev /dev --dir /tmp --dir /data/projects "
             "    --symlink data/projects /link --dir /data/vendor/camera/private \"$@\"",
             "sh", "--ro-bind", build, build, DEVICESHELL, "--no-service", "--no-allocator", "sh",
             "-c", "readlink /link; ls /data; ls -A /data/vendor/camera"});
    EXPECT_EQ(run.out, "data/projects\nprojects\nvendor\n") << run.err;
}

TEST_F(Deviceshell, PassesSignalsOnAndKillsACommandThatIgnoresThem) {
    const struct {
        int number;
        std::string script;
        int status;
    } cases[] = {{SIGINT, "echo ready; exec sleep " + m_mark, 128 + SIGINT},
                 {SIGHUP, "echo ready; exec sleep " + m_mark, 128 + SIGHUP},
                 {SIGTERM, "trap 'echo cleaned; exit 3' TERM; echo ready; while :; do :; done", 3},
                 {SIGTERM, "trap '' TERM; echo ready; sleep " + m_mark, 128 + SIGTERM}};
    for (const auto& sent : cases) {
        Subprocess device(Script(sent.script));
        ASSERT_TRUE(device.WaitForNext("ready"));
        kill(device.Pid(), sent.number);
        EXPECT_EQ(device.Finish().status, sent.status) << sent.script;
        EXPECT_THAT(ProcessesWith(m_mark), IsEmpty());
    }
}

// Each ends only when no process of the device holds its output any more.
TEST_F(Deviceshell, LeavesNoProcessBehindAlsoWhenItOrItsParentIsKilled) {
    EXPECT_EQ(RunProgram(Script("setsid sleep " + m_mark + " & exit 4")).status, 4);
    const Words dying = Device({"sh", "-c", "echo ready; sleep " + m_mark},
                               Joined({kBare, {"--die-with-parent"}}));
    const Words parent = {"sh", "-c", "\"$@\"; true", "sh"};  // "; true": stays the parent
    for (const Words& words : {Script("echo ready; sleep " + m_mark), Joined({parent, dying})}) {
        Subprocess killed(words);
        ASSERT_TRUE(killed.WaitForNext("ready"));
        kill(killed.Pid(), SIGKILL);
        EXPECT_EQ(killed.Finish().status, 128 + SIGKILL);
    }
}

TEST_F(Deviceshell, CtrlCReachesTheCommandAtTheTerminalOnce) {
    Subprocess device(Script("n=0; trap 'n=$((n + 1)); echo caught $n' INT; echo ready\n"
                             "while [ $n = 0 ]; do :; done; read line; exit 5"),
                      {}, Subprocess::Input::kTerminal);
    EXPECT_TRUE(device.Converse({{"", "ready"}, {"\x03", "caught 1"}, {"\n", ""}}));
    const Finished finished = device.Finish();
    EXPECT_EQ(finished.status, 5);
    EXPECT_THAT(finished.out, Not(HasSubstr("caught 2")));
}

// With settings and arguments. It is in the host's /dev, which the device's own hides but for
// programs.
TEST_F(Deviceshell, ReportsAServiceThatDoesNotStart) {
    std::string folder = "/dev/shm/device=shell-XXXXXX";
    if (!mkdtemp(folder.data())) folder = m_folder;
    AddProgram(folder + "/script-service", "echo cannot start $1 $WHY; : >$2 && exit 3");
    const Finished run = RunProgram({DEVICESHELL, "--service",
                                     "WHY=yet " + folder + "/script-service here /dev/null",
                                     "--device-log", m_folder + "/device.log", "echo", "ran"});
    fs::remove_all(folder);
    EXPECT_EQ(run.status, 125);
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, HasSubstr("script-service ended with status 3"));
    EXPECT_THAT(ReadFile(m_folder + "/device.log"),
                AllOf(HasSubstr("cannot start here yet"), Not(HasSubstr("graphicsallocator"))));
}

TEST_F(Deviceshell, TellsAtATerminalWhichServiceItWaitsForAndStopsAtCtrlC) {
    const std::string program = AddProgram(m_folder + "/service", "exec sleep " + m_mark);
    Subprocess device({DEVICESHELL, "--no-allocator", "--service", program, "true"},
                      {{"TERM", "xterm"}}, Subprocess::Input::kTerminal);
    EXPECT_TRUE(device.Converse(
            {{"", "waits 2 s for vendor.zel.hardware.camera.offlinecamera"}, {"\x03", ""}}));
    const Finished finished = device.Finish();
    EXPECT_EQ(finished.status, 128 + SIGINT);
    EXPECT_THAT(finished.out, HasSubstr("signal 2 (Interrupt) came before the device was up"));
    EXPECT_THAT(ProcessesWith(m_mark), IsEmpty());
}

}  // namespace
}  // namespace end_to_end
