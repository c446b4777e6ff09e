// What people see on a terminal.

#include <gmock/gmock.h>
#include <signal.h>

#include "tests/end_to_end/run_script.h"

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

namespace end_to_end {
namespace {

const char kEscape[] = "\033[";

class Terminal : public RunScript {
  protected:
    // The screen after a program has run at a terminal of this kind.
    Finished Show(const Words& words, const char* kind, const char* noColor) {
        return Subprocess(words, CrashSettings({{"TERM", kind}, {"NO_COLOR", noColor}}),
                          Subprocess::Input::kTerminal)
                .Finish();
    }
};

TEST_F(Terminal, ShowsErrorsInRedUnlessAskedNotTo) {
    const Words programs[] = {{m_root + "/run", "--bogus"},
                              {PROJECT_FOLDER "/check", "bogus"},
                              {DEVICESHELL, "--bogus"},
                              {OFFLINEFRAMES, "bogus"}};
    for (const Words& words : programs) {
        SCOPED_TRACE(words[0]);
        EXPECT_THAT(Show(words, "xterm", "").out,
                    AllOf(HasSubstr("\033[31m"), HasSubstr("bogus"), HasSubstr("\033[0m")));
        const std::string plain[] = {Show(words, "xterm", "1").out, Show(words, "dumb", "").out,
                                     RunProgram(words, {{"NO_COLOR", ""}}).err};
        for (const std::string& text : plain) {
            EXPECT_THAT(text, AllOf(HasSubstr("bogus"), Not(HasSubstr(kEscape))));
        }
    }
}

// The time-out of the shutter is long enough to be told.
TEST_F(Terminal, TellsWhatTheToolWaitsForAndTakesItAway) {
    const Words words = {m_root + "/run", "--fault", "no-shutter", "-t", "B2Y"};
    const Finished coloured = Show(words, "xterm", "");
    EXPECT_EQ(coloured.status, 0) << coloured.out;
    const std::string waits = "run: the tool waits for the shutter, 2 s";
    EXPECT_THAT(coloured.out, AllOf(HasSubstr(waits), HasSubstr("makes missing source files"),
                                    HasSubstr("\033[33mwrote all the same "),
                                    HasSubstr("\033[33mthe input frames were left empty")));
    // What follows the last line of progress begins on a line that was blanked.
    const size_t last = coloured.out.rfind("the tool waits");
    EXPECT_THAT(coloured.out.substr(last), HasSubstr("\r" + std::string(78, ' ') + "\r"));
    EXPECT_LT(coloured.out.find("the input frames", last), coloured.out.find('\n', last));
}

// The first one is killed while its tool waits, and leaves no process behind that holds up the
// next. (The shell around it lives on, as its end would take everything at the terminal along.)
TEST_F(Terminal, RunsOneAfterTheOther) {
    const auto environment = CrashSettings({{"TERM", "xterm"}});
    const auto at = Subprocess::Input::kTerminal;
    Subprocess shell({"bash", "-c",
                      "\"$0\" --fault no-shutter -t B2Y &"
                      "trap 'kill -9 %1' USR1; wait; read line",
                      m_root + "/run"},
                     environment, at);
    ASSERT_TRUE(shell.WaitForNext("the tool waits for the shutter"));
    Subprocess next({m_root + "/run", "-t", "callback"}, environment, at);
    ASSERT_TRUE(next.WaitForNext("waits for another ./run to end"));
    kill(shell.Pid(), SIGUSR1);
    const Finished finished = next.Finish();
    EXPECT_EQ(finished.status, 0) << finished.out;
    EXPECT_THAT(finished.out, HasSubstr("report: "));
    EXPECT_THAT(ReadFile(m_root + "/out/run.log"), Not(HasSubstr("WaitForShutter")));
}

}  // namespace
}  // namespace end_to_end
