// Commands run by the real deviceshell: what they see, how they end, and that nothing is left.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/end_to_end/subprocess.h"

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

namespace end_to_end {
namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

class Deviceshell : public ::testing::Test {
  protected:
    Deviceshell() {
        std::string name = ::testing::TempDir() + "deviceshell-XXXXXX";
        m_folder = mkdtemp(name.data());
        // A command word that only this test's processes have.
        m_mark = "9" + std::to_string(getpid()) + "00001";
    }
    ~Deviceshell() override { fs::remove_all(m_folder); }

    // deviceshell without services, with the test's folder as data folder.
    Words bare(const Words& command, const Words& options = {}) const {
        Words words = {DEVICESHELL, "--no-service", "--no-allocator", "--data", m_folder};
        words.insert(words.end(), options.begin(), options.end());
        words.insert(words.end(), command.begin(), command.end());
        return words;
    }

    Words shell(const std::string& script, const Words& options = {}) const {
        return bare({"sh", "-c", script}, options);
    }

    // A script in place of the service.
    std::string addService(const std::string& script) const {
        const std::string path = m_folder + "/script-service";
        std::ofstream(path) << "#!/bin/sh\n" << script << "\n";
        chmod(path.c_str(), 0755);
        return path;
    }

    std::string fileText(const std::string& name) const {
        std::ostringstream text;
        text << std::ifstream(m_folder + "/" + name).rdbuf();
        return text.str();
    }

    std::string m_folder;
    std::string m_mark;
};

TEST_F(Deviceshell, PassesArgumentsOutputAndStatusThrough) {
    const Finished run = runProgram(bare({"printf", "%s|", "a b", "", "$x", "--help"}));
    EXPECT_EQ(run.out, "a b||$x|--help|");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);

    const Finished failing = runProgram(shell("echo out; echo err >&2; exit 7"));
    EXPECT_EQ(failing.out, "out\n");
    EXPECT_EQ(failing.err, "err\n");
    EXPECT_EQ(failing.status, 7);
}

TEST_F(Deviceshell, TellsHowACommandDied) {
    EXPECT_EQ(runProgram(shell("kill -SEGV $$")).status, 128 + SIGSEGV);
    EXPECT_FALSE(fs::exists(m_folder + "/core"));
    const Finished missing = runProgram(bare({"no-such-command"}));
    EXPECT_EQ(missing.status, 127);
    EXPECT_THAT(missing.err, HasSubstr("no-such-command"));
    EXPECT_EQ(runProgram(bare({"/etc/passwd"})).status, 126);
}

TEST_F(Deviceshell, RefusesBadUsageAndStartsNothing) {
    const struct {
        Words options;
        const char* named;
    } cases[] = {{{"--bogus"}, "--bogus"},
                 {{"--service", "/no/such/program"}, "/no/such/program"},
                 {{"--log", "/no/such/folder/log"}, "/no/such/folder/log"},
                 {{"--data", "/no/such/folder"}, "/no/such/folder"},
                 {{"--fault", "no-such-fault"}, "no-such-fault"}};
    for (const auto& bad : cases) {
        Words words = {DEVICESHELL, "--data", m_folder};
        words.insert(words.end(), bad.options.begin(), bad.options.end());
        words.insert(words.end(), {"sh", "-c", "echo ran > /data/vendor/camera/ran"});
        const Finished run = runProgram(words);
        EXPECT_EQ(run.status, 2) << bad.named;
        EXPECT_THAT(run.err, HasSubstr(bad.named));
        EXPECT_FALSE(fs::exists(m_folder + "/ran")) << bad.named;
    }
}

TEST_F(Deviceshell, TheDataFolderIsTheOnlyPlaceToWrite) {
    const std::string outside = m_folder + "/outside";
    const Finished run = runProgram(
            shell("echo text > /data/vendor/camera/file\n"
                  "for place in / /usr /tmp /data /vendor/bin /vendor/lib64 " +
                  m_folder +
                  "; do\n"
                  "    { echo text > $place/outside; } 2> /dev/null && echo wrote $place\n"
                  "done\n"
                  "stat -c %a /binder\n"));
    EXPECT_EQ(run.out, "700\n");
    EXPECT_EQ(fileText("file"), "text\n");
    EXPECT_FALSE(fs::exists(outside));
}

TEST_F(Deviceshell, GivesTheCommandItsLogAndTrace) {
    const std::string log = m_folder + "/log";
    const std::string trace = m_folder + "/trace";
    std::ofstream(log) << "from an earlier run\n";
    // Descriptors of two digits need another shell than Debian's smallest.
    const Finished run = runProgram(
            bare({"bash", "-c",
                  "echo 'a line' >&$STANDIN_LOG_FD; echo call >&$STANDIN_BINDER_TRACE_FD; "
                  "echo ${STANDIN_LOG_ECHO-none} $POSIXLY_CORRECT $STANDIN_BINDER_DIR"},
                 {"--log", log, "--trace", trace}));
    EXPECT_EQ(run.out, "none 1 /binder\n");
    EXPECT_EQ(fileText("log"), "a line\n");
    EXPECT_EQ(fileText("trace"), "call\n");
    EXPECT_EQ(runProgram(shell("echo $STANDIN_LOG_ECHO", {"-v"})).out, "1\n");
}

TEST_F(Deviceshell, EndsWhatTheCommandLeftBehind) {
    const Finished run = runProgram(shell("setsid sleep " + m_mark + " & echo started"));
    EXPECT_EQ(run.out, "started\n");
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(processesWith(m_mark), IsEmpty());
}

TEST_F(Deviceshell, PassesSignalsOn) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        Subprocess device(shell("echo ready; exec sleep " + m_mark));
        ASSERT_TRUE(device.waitForOutput("ready"));
        kill(device.pid(), number);
        EXPECT_EQ(device.finish().status, 128 + number);
        EXPECT_THAT(processesWith(m_mark), IsEmpty());
    }
}

TEST_F(Deviceshell, ACommandMayEndInOrderAfterASignal) {
    Subprocess device(shell("trap 'echo cleaned; exit 3' TERM; echo ready; while :; do :; done"));
    ASSERT_TRUE(device.waitForOutput("ready"));
    kill(device.pid(), SIGTERM);
    const Finished run = device.finish();
    EXPECT_EQ(run.out, "ready\ncleaned\n");
    EXPECT_EQ(run.status, 3);
}

TEST_F(Deviceshell, KillsACommandThatIgnoresTheSignal) {
    Subprocess device(shell("trap '' TERM; echo ready; sleep " + m_mark));
    ASSERT_TRUE(device.waitForOutput("ready"));
    kill(device.pid(), SIGTERM);
    EXPECT_EQ(device.finish().status, 128 + SIGTERM);
    EXPECT_THAT(processesWith(m_mark), IsEmpty());
}

TEST_F(Deviceshell, TakesEverythingAlongWhenItIsKilled) {
    Subprocess device(shell("echo ready; sleep " + m_mark));
    ASSERT_TRUE(device.waitForOutput("ready"));
    kill(device.pid(), SIGKILL);
    // Ends only when no process of the device holds the output any more.
    EXPECT_EQ(device.finish().status, 128 + SIGKILL);
}

TEST_F(Deviceshell, EndsWithItsParentWhenAskedTo) {
    const Words inner = shell("echo ready; sleep " + m_mark, {"--die-with-parent"});
    Words words = {"sh", "-c", "\"$@\"; true", "sh"};  // "; true": stays the parent
    words.insert(words.end(), inner.begin(), inner.end());
    Subprocess parent(words);
    ASSERT_TRUE(parent.waitForOutput("ready"));
    kill(parent.pid(), SIGKILL);
    EXPECT_EQ(parent.finish().status, 128 + SIGKILL);
}

TEST_F(Deviceshell, CtrlCReachesTheCommandAtTheTerminal) {
    Subprocess device(shell("echo ready; exec sleep " + m_mark), {}, Subprocess::Input::Terminal);
    ASSERT_TRUE(device.waitForOutput("ready"));
    device.type("\x03");
    EXPECT_EQ(device.finish().status, 128 + SIGINT);
}

// A bubblewrap that starts nothing until the terminal has shown the Ctrl-C.
TEST_F(Deviceshell, CtrlCIsNotLostBeforeTheFirstProcessIsThere) {
    std::ofstream(m_folder + "/bwrap") << "#!/bin/sh\n"
                                          "echo early; until [ -e \"$0.go\" ]; do :; done\n"
                                          "PATH=${PATH#*:}; exec bwrap \"$@\"\n";
    chmod((m_folder + "/bwrap").c_str(), 0755);
    Subprocess device(shell("echo ran"), {{"PATH", m_folder + ":" + getenv("PATH")}},
                      Subprocess::Input::Terminal);
    ASSERT_TRUE(device.waitForOutput("early"));
    device.type("\x03");
    ASSERT_TRUE(device.waitForOutput("^C"));
    std::ofstream(m_folder + "/bwrap.go").close();
    const Finished finished = device.finish();
    EXPECT_EQ(finished.status, 128 + SIGINT);
    EXPECT_THAT(finished.out, Not(HasSubstr("ran\r\n")));
}

// /dev is the device's own, but for programs that lie in it.
TEST_F(Deviceshell, FindsAServiceInSharedMemory) {
    std::string folder = "/dev/shm/deviceshell-XXXXXX";
    if (!mkdtemp(folder.data())) GTEST_SKIP() << "no folder in /dev/shm";
    fs::copy(addService("echo found; exit 3"), folder + "/service");
    const Finished run = runProgram({DEVICESHELL, "--service", folder + "/service", "--device-log",
                                     m_folder + "/device.log", "true"});
    fs::remove_all(folder);
    EXPECT_EQ(run.status, 125);
    EXPECT_THAT(fileText("device.log"), HasSubstr("found"));
}

TEST_F(Deviceshell, ReportsAServiceThatDoesNotStart) {
    const std::string program = addService("echo cannot start; exit 3");
    const Finished run = runProgram({DEVICESHELL, "--no-allocator", "--service", program,
                                     "--device-log", m_folder + "/device.log", "echo", "ran"});
    EXPECT_EQ(run.status, 125);
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, HasSubstr("script-service ended with status 3"));
    EXPECT_THAT(fileText("device.log"), HasSubstr("cannot start"));
}

TEST_F(Deviceshell, TellsAtATerminalWhichServiceItWaitsForAndStopsAtCtrlC) {
    const std::string program = addService("exec sleep " + m_mark);
    Subprocess device({DEVICESHELL, "--no-allocator", "--service", program, "true"},
                      {{"TERM", "xterm"}}, Subprocess::Input::Terminal);
    ASSERT_TRUE(device.waitForOutput("waits 2 s for vendor.zel.hardware.camera.offlinecamera"));
    device.type("\x03");
    const Finished finished = device.finish();
    EXPECT_EQ(finished.status, 128 + SIGINT);
    EXPECT_THAT(finished.out, HasSubstr("signal 2 (Interrupt) came before the device was up"));
    EXPECT_THAT(processesWith(m_mark), IsEmpty());
}

TEST_F(Deviceshell, ListsItsOptionsAndTheFaultsOfBothPrograms) {
    const Finished run = runProgram({DEVICESHELL, "--fault", "help"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(run.out, AllOf(HasSubstr("no-shutter"), HasSubstr("allocate-error")));
    EXPECT_THAT(runProgram({DEVICESHELL, "--help"}).out, HasSubstr("usage: deviceshell"));
}

}  // namespace
}  // namespace end_to_end
