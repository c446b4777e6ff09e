// deviceshell without a command: a shell for a person at a terminal, or for a script.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/end_to_end/device_run.h"

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

namespace end_to_end {
namespace {

const char kPrompt[] = "standin:/ $ ";

// A script on standard input, as "deviceshell OPTIONS < script" gives it.
Finished RunScript(const std::string& script, const Words& options) {
    const Words feed = {"sh", "-c", "printf %s \"$0\" | \"$@\"", script, DEVICESHELL};
    return RunProgram(Joined({feed, options}), CrashSettings());
}

class ShellAtTerminal : public ::testing::Test {
  protected:
    Subprocess m_shell{{DEVICESHELL, "--no-service", "--no-allocator"},
                       CrashSettings({{"TERM", "dumb"}}),  // no line editor's escape codes
                       Subprocess::Input::kTerminal};
};

TEST_F(ShellAtTerminal, TellsWhatIsAtHandAndEndsWithTheShell) {
    const std::string mark = "977" + std::to_string(getpid());
    EXPECT_TRUE(m_shell.Converse(
            {{"", kPrompt},
             {"echo $HOME-\r", "\n/data/vendor/camera-"},
             {"command -v vexofflinecameratest service\r", "\n/vendor/bin/service"},
             {"setsid sleep " + mark + " &\r", "]"},
             {"exit 5\r", ""}}));
    const Finished finished = m_shell.Finish();
    EXPECT_EQ(finished.status, 5) << finished.out;
    EXPECT_THAT(finished.out, AllOf(StartsWith("A shell on the stand-in device"),
                                    HasSubstr("service list"), HasSubstr("logcat")));
    EXPECT_THAT(ProcessesWith(mark), IsEmpty());
}

// The command repeats what is typed, once it says that it does. By job control, a stopped one
// leaves the terminal to the shell, and comes back.
TEST_F(ShellAtTerminal, CtrlCEndsTheCommandAndNotTheDevice) {
    const char* const startCat = "echo repea''ting; cat\r";
    EXPECT_TRUE(m_shell.Converse({{"", kPrompt},
                                  {startCat, "\nrepeating\r\n"},
                                  {"first\r", "first\r\nfirst\r\n"},
                                  {"\x03", kPrompt},
                                  {"service list\r", "Found 0 services:"},
                                  {startCat, "\nrepeating\r\n"},
                                  {"again\r", "again\r\nagain\r\n"},
                                  {"\x1a", kPrompt},
                                  {"fg\r", "cat\r\n"},
                                  {"second\r", "second\r\nsecond\r\n"},
                                  {"\x04", kPrompt},
                                  {"\x04", ""}}));  // at the prompt: the end
    const Finished finished = m_shell.Finish();
    EXPECT_EQ(finished.status, 0) << finished.out;
}

// The caller's shell goes on with its terminal, although the device's shell was killed.
TEST(ShellInAScript, GivesTheTerminalBack) {
    Subprocess caller({"bash", "-c",
                       "'" DEVICESHELL "' --no-service --no-allocator; echo back; read line; "
                       "echo \"read $line, $(stty -a | grep -o -- '[-]*icanon')\""},
                      {{"TERM", "vt100"}}, Subprocess::Input::kTerminal);
    EXPECT_TRUE(caller.Converse(
            {{"", "$ "}, {"kill -9 $$\r", "back\r\n"}, {"words\r", "read words, icanon"}}));
    EXPECT_EQ(caller.Finish().status, 0);
}

// The tool's and the service's lines are in one log. Without -d, logcat goes on until its reader
// has seen enough.
TEST(ShellForAScript, HasServicesLogAndTraceAtHand) {
    const Finished run = RunScript(
            "read line\nthese words\necho $line; service list; service check no.such/default\n"
            "vexofflinecameratest -t callback & logcat | grep -m 1 -o 'camera client exit'; wait\n"
            "echo LOG; logcat -d; logcat -c; echo GONE; logcat -d\n"
            "echo TRACE; trace -d; trace -c; trace -d; exit 9",
            {});
    EXPECT_EQ(run.status, 9);
    EXPECT_EQ(run.err, "");
    EXPECT_THAT(run.out,
                MatchesRegex("these words\nFound 2 services:\n"
                             "0\tandroid.hardware.graphics.allocator.IAllocator/default: "
                             "\\[android.hardware.graphics.allocator.IAllocator\\]\n"
                             "1\tvendor[^\n]*\nService no.such/default: not found\n"
                             "cmd: -t=callback\n.*camera client exit\n"
                             ".*LOG\n.*client 0 registered\n.*GONE\nTRACE\n.*registerClient .*"));
}

// Lines as adb or a script for a device has them.
TEST(ShellForAScript, HasTheCommandsOfADevice) {
    const std::pair<const char*, const char*> cases[] = {
            {"adb root && adb remount && adb sync vendor", ""},
            {"adb shell vexofflinecameratest -t Y2Y | tail -n 1", "ret: =0\n"},
            {"adb logcat -d -s OfflineCameraTest | cut -c 35- | head -n 1",
             "I OfflineCameraTest: main: offline camera client connect to service \n"},
            {"logcat -d -v brief OfflineCameraClient:E '*:S' | sed 's/( *[0-9]*)/()/'",
             "E/OfflineCameraClient(): invalid op mode 2\n"
             "E/OfflineCameraClient(): ConfigureOfflineStreams, FAILED...\n"},
            {"logcat -d -v raw -e 'opMode [0-9]'",
             "main: offline camera client opMode 2\n[AIDL] setOpMode opMode 2\n"},
            {"logcat -t 2 | wc -l", "2\n"},
            {"logcat -m 1 -v process | cut -c 1", "I\n"},
            {"echo x > /data/vendor/camera/x; cd /data; adb pull /data/vendor/camera/x "
             "/data/vendor/camera/y; cat vendor/camera/y",
             "x\n"},
            {"getprop ro.build.version.sdk; getprop no.such default", "34\ndefault\n"},
            {"ls -d /run", ""}};
    std::string script;
    std::string expected;
    for (const auto& [line, output] : cases) {
        script += std::string(line) + "\n";
        expected += output;
    }
    EXPECT_EQ(RunScript(script, {}).out, expected);
}

TEST(ShellForAScript, HasProgramsThatSayWhatTheyMiss) {
    const Finished run = RunScript(
            "service dump x || echo $?; service check || echo $?; service list all || echo $?\n"
            "logcat -x || echo $?; logcat -b crash || echo $?; reboot || echo $?\n"
            "STANDIN_BINDER_DIR=/no/such service list || echo $?; STANDIN_LOG_FD= logcat || echo "
            "$?",
            {"--no-service", "--no-allocator"});
    EXPECT_EQ(run.out, "2\n2\n2\n2\n1\n1\n1\n1\n");
    EXPECT_THAT(run.err, MatchesRegex(".*unknown action dump.*one name.*no further words.*word -x"
                                      ".*no buffer of crashes.*not on the stand-in device"
                                      ".*the service manager does not answer"
                                      ".*nothing is kept here.*"));
}

}  // namespace
}  // namespace end_to_end
