// deviceshell without a command: a shell for a person at a terminal, or for a script.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/end_to_end/device_run.h"

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

namespace end_to_end {
namespace {

using Words = std::vector<std::string>;

const char kPrompt[] = "standin:/ $ ";
const char kService[] = "vendor.zel.hardware.camera.offlinecamera.IOfflineCameraService/default";

// A script on standard input, as "deviceshell OPTIONS < script" gives it.
Finished runScript(const std::string& script, const Words& options = {}) {
    Words words = {"sh", "-c", "printf %s \"$0\" | \"$@\"", script, DEVICESHELL};
    words.insert(words.end(), options.begin(), options.end());
    return runProgram(words, crashSettings());
}

std::string between(const std::string& text, const std::string& before, const std::string& after) {
    const size_t begin = text.find(before);
    const size_t end = begin == std::string::npos ? begin : text.find(after, begin);
    if (end == std::string::npos) return "nothing between " + before + " and " + after;
    return text.substr(begin + before.size(), end - begin - before.size());
}

class ShellAtTerminal : public ::testing::Test {
  protected:
    explicit ShellAtTerminal(const Words& options = {"--no-service", "--no-allocator"}) {
        Words words = {DEVICESHELL};
        words.insert(words.end(), options.begin(), options.end());
        Subprocess::Environment environment = crashSettings();
        environment.emplace_back("TERM", "dumb");  // no line editor's escape codes
        m_shell.emplace(words, environment, Subprocess::Input::Terminal);
    }

    // What the shell shows between a command and its next prompt.
    bool enter(const std::string& command, const std::string& shown) {
        m_shell->type(command + "\r");
        return m_shell->waitForNext(shown) && m_shell->waitForNext(kPrompt);
    }

    std::optional<Subprocess> m_shell;
};

TEST_F(ShellAtTerminal, TellsWhatIsAtHandAndEndsWithTheShell) {
    ASSERT_TRUE(m_shell->waitForNext(kPrompt));
    EXPECT_TRUE(enter("echo $HOME-", "\n/data/vendor/camera-"));
    EXPECT_TRUE(enter("command -v vexofflinecameratest service", "/vendor/bin/service"));
    EXPECT_TRUE(enter("setsid sleep 977" + std::to_string(getpid()) + " &", "]"));
    m_shell->type("exit 5\r");
    const Finished finished = m_shell->finish();
    EXPECT_EQ(finished.status, 5) << finished.out;
    EXPECT_THAT(finished.out, AllOf(StartsWith("A shell on the stand-in device"),
                                    HasSubstr("service list"), HasSubstr("logcat")));
    EXPECT_THAT(processesWith("977" + std::to_string(getpid())), IsEmpty());
}

// A command that repeats what is typed, once it says that it does.
TEST_F(ShellAtTerminal, CtrlCEndsTheCommandAndNotTheDevice) {
    ASSERT_TRUE(m_shell->waitForNext(kPrompt));
    const auto startCat = [&] {
        m_shell->type("echo repea''ting; cat\r");
        return m_shell->waitForNext("\nrepeating\r\n");
    };
    const auto repeats = [&](const std::string& word) {
        m_shell->type(word + "\r");
        return m_shell->waitForNext(word + "\r\n" + word + "\r\n");
    };
    ASSERT_TRUE(startCat());
    ASSERT_TRUE(repeats("first"));
    m_shell->type("\x03");
    ASSERT_TRUE(m_shell->waitForNext(kPrompt));
    EXPECT_TRUE(enter("service list", "Found 0 services:"));

    // Job control: a stopped command leaves the terminal to the shell, and comes back.
    ASSERT_TRUE(startCat());
    ASSERT_TRUE(repeats("first again"));
    m_shell->type("\x1a");
    ASSERT_TRUE(m_shell->waitForNext(kPrompt));
    m_shell->type("fg\r");
    ASSERT_TRUE(m_shell->waitForNext("cat\r\n"));
    ASSERT_TRUE(repeats("second"));
    m_shell->type("\x04");
    ASSERT_TRUE(m_shell->waitForNext(kPrompt));
    m_shell->type("\x04");  // at the prompt: the end
    EXPECT_EQ(m_shell->finish().status, 0);
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

TEST(ShellForAScript, RunsItsCommandsAndEndsWithItsStatus) {
    const Finished run = runScript("echo $PWD\ncat\nthese words\n", {"--no-service"});
    EXPECT_EQ(run.out, "/\nthese words\n");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(runScript("exit 9", {"--no-service"}).status, 9);
}

TEST(ShellForAScript, HasServicesLogAndTraceAtHand) {
    const std::string name = kService;
    const Finished run = runScript("service list; service check " + name +
                                   "; service check no.such/default; "
                                   "vexofflinecameratest -t callback; "
                                   "echo LOG; logcat -d; logcat -c; echo GONE; logcat -d; "
                                   "echo TRACE; trace -d; trace -c; trace -d; echo END");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_THAT(run.out, StartsWith("Found 2 services:\n"
                                    "0\tandroid.hardware.graphics.allocator.IAllocator/default: "
                                    "[android.hardware.graphics.allocator.IAllocator]\n"
                                    "1\t" +
                                    name + ": [" + name.substr(0, name.rfind('/')) + "]\n" +
                                    "Service " + name + ": found\n" +
                                    "Service no.such/default: not found\n" + "cmd: -t=callback\n"));
    // The tool's and the service's lines are in one log.
    EXPECT_THAT(between(run.out, "LOG\n", "GONE\n"), AllOf(HasSubstr("registerClient clientId 0\n"),
                                                           HasSubstr("client 0 registered\n")));
    EXPECT_EQ(between(run.out, "GONE\n", "TRACE\n"), "");
    const std::string trace = between(run.out, "TRACE\n", "END\n");
    EXPECT_THAT(trace, HasSubstr(".registerClient "));
}

// Without -d, logcat goes on until its reader has seen enough.
TEST(ShellForAScript, FollowsTheLog) {
    const Finished run = runScript(
            "vexofflinecameratest -t callback >&2 & "
            "logcat | grep -m 1 -o 'offline camera client exit'");
    EXPECT_EQ(run.out, "offline camera client exit\n");
    EXPECT_EQ(run.status, 0) << run.err;
}

TEST(ShellForAScript, RefusesWordsThatNobodyKnows) {
    const struct {
        const char* command;
        const char* named;
    } cases[] = {{"service", "no action"},         {"service dump x", "unknown action dump"},
                 {"service check", "one name"},    {"service list all", "no further words"},
                 {"logcat -x", "unknown word -x"}, {"trace -d -d", "unknown word -d"}};
    std::string script;
    for (const auto& wrong : cases) script += std::string(wrong.command) + " || echo $?;";
    const Finished run = runScript(script, {"--no-service", "--no-allocator"});
    EXPECT_EQ(run.out, "2\n2\n2\n2\n2\n2\n");
    for (const auto& wrong : cases) EXPECT_THAT(run.err, HasSubstr(wrong.named));
}

TEST(ShellsPrograms, SayWhatTheyMiss) {
    const Finished log = runProgram(
            {DEVICESHELL, "--no-service", "--no-allocator", "sh", "-c", "logcat -d; trace -d"});
    EXPECT_THAT(log.err, AllOf(HasSubstr("logcat: nothing is kept here"), HasSubstr("--trace")));
    const std::string folder = std::filesystem::path(DEVICESHELL).parent_path();
    const Finished service =
            runProgram({folder + "/service", "list"}, {{"STANDIN_BINDER_DIR", "/no/such/folder"}});
    EXPECT_EQ(service.status, 1);
    EXPECT_THAT(service.err, HasSubstr("the service manager does not answer"));
}

}  // namespace
}  // namespace end_to_end
