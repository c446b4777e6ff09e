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
    return runProgram(Joined({feed, options}), crashSettings());
}

class ShellAtTerminal : public ::testing::Test {
  protected:
    // What the shell shows between a command and its next prompt.
    bool Enter(const std::string& command, const std::string& shown) {
        m_shell.type(command + "\r");
        return m_shell.waitForNext(shown) && m_shell.waitForNext(kPrompt);
    }

    Subprocess m_shell{{DEVICESHELL, "--no-service", "--no-allocator"},
                       crashSettings({{"TERM", "dumb"}}),  // no line editor's escape codes
                       Subprocess::Input::Terminal};
};

TEST_F(ShellAtTerminal, TellsWhatIsAtHandAndEndsWithTheShell) {
    const std::string mark = "977" + std::to_string(getpid());
    ASSERT_TRUE(m_shell.waitForNext(kPrompt));
    EXPECT_TRUE(Enter("echo $HOME-", "\n/data/vendor/camera-"));
    EXPECT_TRUE(Enter("command -v vexofflinecameratest service", "/vendor/bin/service"));
    EXPECT_TRUE(Enter("setsid sleep " + mark + " &", "]"));
    m_shell.type("exit 5\r");
    const Finished finished = m_shell.finish();
    EXPECT_EQ(finished.status, 5) << finished.out;
    EXPECT_THAT(finished.out, AllOf(StartsWith("A shell on the stand-in device"),
                                    HasSubstr("service list"), HasSubstr("logcat")));
    EXPECT_THAT(processesWith(mark), IsEmpty());
}

// A command that repeats what is typed, once it says that it does.
TEST_F(ShellAtTerminal, CtrlCEndsTheCommandAndNotTheDevice) {
    ASSERT_TRUE(m_shell.waitForNext(kPrompt));
    const auto startCat = [&] {
        m_shell.type("echo repea''ting; cat\r");
        return m_shell.waitForNext("\nrepeating\r\n");
    };
    const auto repeats = [&](const std::string& word) {
        m_shell.type(word + "\r");
        return m_shell.waitForNext(word + "\r\n" + word + "\r\n");
    };
    ASSERT_TRUE(startCat() && repeats("first"));
    m_shell.type("\x03");
    ASSERT_TRUE(m_shell.waitForNext(kPrompt));
    EXPECT_TRUE(Enter("service list", "Found 0 services:"));

    // Job control: a stopped command leaves the terminal to the shell, and comes back.
    ASSERT_TRUE(startCat() && repeats("first again"));
    m_shell.type("\x1a");
    ASSERT_TRUE(m_shell.waitForNext(kPrompt));
    m_shell.type("fg\r");
    ASSERT_TRUE(m_shell.waitForNext("cat\r\n") && repeats("second"));
    m_shell.type("\x04");
    ASSERT_TRUE(m_shell.waitForNext(kPrompt));
    m_shell.type("\x04");  // at the prompt: the end
    EXPECT_EQ(m_shell.finish().status, 0);
}

// The caller's shell goes on with its terminal, although the device's shell was killed.
TEST(ShellInAScript, GivesTheTerminalBack) {
    Subprocess caller({"bash", "-c",
                       "'" DEVICESHELL "' --no-service --no-allocator; echo back; read line; "
                       "echo \"read $line, $(stty -a | grep -o -- '[-]*icanon')\""},
                      {{"TERM", "vt100"}}, Subprocess::Input::Terminal);
    ASSERT_TRUE(caller.waitForNext("$ "));
    caller.type("kill -9 $$\r");
    ASSERT_TRUE(caller.waitForNext("back\r\n"));
    caller.type("words\r");
    EXPECT_TRUE(caller.waitForNext("read words, icanon"));
    EXPECT_EQ(caller.finish().status, 0);
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

TEST(ShellForAScript, HasProgramsThatSayWhatTheyMiss) {
    const Finished run = RunScript(
            "service dump x || echo $?; service check || echo $?; service list all || echo $?\n"
            "logcat -x || echo $?; STANDIN_BINDER_DIR=/no/such service list || echo $?\n"
            "STANDIN_LOG_FD= logcat -d || echo $?",
            {"--no-service", "--no-allocator"});
    EXPECT_EQ(run.out, "2\n2\n2\n2\n1\n1\n");
    EXPECT_THAT(run.err, MatchesRegex(".*unknown action dump.*one name.*no further words.*word -x"
                                      ".*the service manager does not answer"
                                      ".*nothing is kept here.*"));
}

}  // namespace
}  // namespace end_to_end
