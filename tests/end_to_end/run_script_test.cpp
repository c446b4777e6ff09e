// ./run in a copy of the project whose build is this one: its options, report and files.

#include "tests/end_to_end/run_script.h"

#include <gmock/gmock.h>

#include <algorithm>

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

namespace end_to_end {
namespace {

namespace fs = std::filesystem;

TEST_F(RunScript, RefusesWrongOptionsBeforeAnythingStarts) {
    const struct {
        std::vector<std::string> arguments;
        const char* named;
    } cases[] = {{{"--bogus", "-t", "B2Y"}, "--bogus"},
                 {{"--planes", "--fault"}, "--fault"},
                 {{"--data", "/no/such folder", "-t", "B2Y"}, "/no/such folder"},
                 {{"--data=/no/such", "-t", "B2Y"}, "/no/such"},
                 {{"--data", "/", "--source", "/etc/passwd"}, "--from /etc/passwd"},
                 {{"--shell", "-t", "B2Y"}, "--shell"},
                 {{"--service", "/etc/passwd", "-t", "B2Y"}, "not executable"},
                 {{"--fault", "no-such-fault", "-t", "B2Y"}, "no-such-fault"}};
    for (const auto& wrong : cases) {
        const Finished finished = Run(wrong.arguments);
        EXPECT_EQ(finished.status, 2) << wrong.named;
        EXPECT_EQ(finished.out, "");
        EXPECT_THAT(finished.err, HasSubstr(wrong.named));
        EXPECT_FALSE(fs::exists(m_root + "/out/run.log")) << wrong.named;
    }
}

TEST_F(RunScript, TheOtherCommandRefusesWrongWordsBeforeItBuilds) {
    fs::copy(PROJECT_FOLDER "/check", m_root + "/check");
    for (const char* words : {"bogus", "asan tsan", "soak many", "soak 5 words", "fuzz 0",
                              "faults --reject", "bench --accept all", "pages all", "tidy all"}) {
        const Finished finished =
                RunProgram({"bash", "-c", "exec \"$0\" $1", m_root + "/check", words});
        EXPECT_EQ(finished.status, 2) << words;
        EXPECT_EQ(std::count(finished.err.begin(), finished.err.end(), '\n'), 1) << finished.err;
        EXPECT_FALSE(fs::exists(m_root + "/out/.lock")) << words;
    }
}

TEST_F(RunScript, LeavesEverythingAfterItsOptionsToTheTool) {
    const Finished help = Run({"-v", "-h"});
    EXPECT_EQ(help.status, 255);
    EXPECT_THAT(help.out, StartsWith("******Offline camera client test tool"));
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{}, {"B2Y"}, {"B2Y", "--planes"}, {"--", "B2Y"}}) {
        const Finished hint = Run(arguments);
        EXPECT_EQ(hint.status, 255);
        EXPECT_THAT(hint.out, HasSubstr("please execute help cmd"));
    }
    EXPECT_THAT(Run({"-t", "Y2Y", "--fault=lend"}).err, HasSubstr("--fault=lend is the tool's"));
    const Finished unknown = Run({"--", "--planes"});
    EXPECT_EQ(unknown.status, 255);
    EXPECT_EQ(unknown.out, "");
    EXPECT_THAT(unknown.err, HasSubstr("vexofflinecameratest: "));
    EXPECT_THAT(Run({"--help"}).out, StartsWith("usage: ./run"));
    EXPECT_THAT(Run({"--fault", "help"}).out, HasSubstr("no-shutter"));
}

// It asks the build only when a file has changed.
TEST_F(RunScript, BuildsWhatHasChanged) {
    std::ofstream(m_root + "/out/build/build.ninja")
            << "rule copy\n  command = cp $in $out\nbuild made: copy ../../source\n"
               "build host/all: phony made\nbuild vexofflinecameratest examples/all: phony\n";
    for (const char* text : {"old", "old", "new"}) {
        std::ofstream(m_root + "/source") << text;
        EXPECT_EQ(Run({"-h"}).status, 255);
        EXPECT_EQ(ReadFile(m_root + "/out/build/made"), text);
        EXPECT_EQ(Run({"-h"}).err, "run: './run --help' tells run's own options\n");
    }
}

TEST_F(RunScript, ReportsDumpsAndPictures) {
    const Finished plain = Run({"-t", "B2Y"});
    EXPECT_EQ(plain.status, 0) << plain.err;
    EXPECT_EQ(plain.out, "cmd: -t=B2Y\nopMode: B2Y=0\nret: =0\n");
    const std::string empty = "OfflineAidl_CameraId_2_Frame_1_B2Y_Stride[4096]_Scanline[0]";
    EXPECT_THAT(plain.err, HasSubstr(empty + ".yuv (18874368 bytes), "));
    EXPECT_THAT(plain.err, HasSubstr("left empty"));
    EXPECT_THAT(ReadFile(m_root + "/out/pictures/" + empty + ".png"), StartsWith("\x89PNG"));
    EXPECT_THAT(ReadLog(m_root + "/out/run.log"), Not(IsEmpty()));

    const Finished planes = Run({"--planes", "-v", "-t", "B2Y"});
    EXPECT_EQ(planes.out, plain.out);
    EXPECT_THAT(planes.err, HasSubstr("Scanline[3072].yuv"));
    EXPECT_THAT(planes.err, HasSubstr("OfflineCameraTest: main: offline camera client exit"));
    EXPECT_THAT(planes.err, Not(HasSubstr("Scanline[0].yuv (")));
    EXPECT_THAT(planes.err, Not(HasSubstr("left empty")));

    // A report stays where nothing was run, and is never mistaken for that of a refused run.
    EXPECT_THAT(Run({"help"}).err, HasSubstr("./run --help"));
    EXPECT_TRUE(fs::exists(m_root + "/out/report.html"));
    EXPECT_EQ(Run({"--fault", "no-such-fault", "-t", "B2Y"}).status, 2);
    EXPECT_FALSE(fs::exists(m_root + "/out/report.html"));
    EXPECT_FALSE(fs::exists(m_root + "/out/report.json"));
}

TEST_F(RunScript, UsesAnotherDataFolderAndLeavesTheAllocatorOut) {
    fs::create_directory(m_root + "/my data");
    const std::string unreadable = m_root + "/my data/lost+found";  // but for root
    fs::create_directory(unreadable);
    fs::permissions(unreadable, fs::perms::none);
    const Finished finished =
            Run({"--no-allocator", "--data", m_root + "/my data", "-t", "callback"});
    EXPECT_EQ(finished.status, 0) << finished.err;
    EXPECT_THAT(ReadFile(m_root + "/out/run.log"), HasSubstr("zelAllocator getService failed"));
    EXPECT_TRUE(fs::exists(m_root + "/my data/offlinecameratest/mmf_fd.yuv"));
    EXPECT_FALSE(fs::exists(m_root + "/out/camera"));
    fs::remove(unreadable);
}

TEST_F(RunScript, OpensAShellOnTheDeviceAndReportsTheLastRunInIt) {
    const auto shell = [&](const std::string& script, const std::string& options) {
        return RunProgram(
                {"sh", "-c", "echo \"$1\" | \"$0\" --shell " + options, m_root + "/run", script},
                CrashSettings());
    };
    EXPECT_EQ(shell("service list", "--no-allocator").status, 0);
    EXPECT_FALSE(fs::exists(m_root + "/out/report.json"));
    const Finished finished = shell(
            "vexofflinecameratest -t B2Y; service list; vexofflinecameratest -t Y2J; exit 3", "");
    EXPECT_EQ(finished.status, 3) << finished.err;
    const std::string facts = ReadFile(m_root + "/out/report.json");
    EXPECT_THAT(facts, AllOf(HasSubstr(R"("command":["vexofflinecameratest","-t","Y2J"])"),
                             HasSubstr(R"("options":[])"), HasSubstr(R"("ending":"finished")"),
                             HasSubstr(R"("name":"dump")"), HasSubstr(R"("from":"services")"),
                             HasSubstr("Y2J_Width"), Not(HasSubstr("B2Y_Stride"))));
    // A crash of the tool is its own, although the shell goes on.
    EXPECT_EQ(shell("vexofflinecameratest -t callback; true", "--no-service").status, 0);
    EXPECT_THAT(ReadFile(m_root + "/out/report.json"), HasSubstr(R"("ending":"signal")"));
    EXPECT_THAT(finished.out, StartsWith("cmd: -t=B2Y\nopMode: B2Y=0\nret: =0\nFound 2 services:"));
    EXPECT_THAT(finished.err, HasSubstr("Scanline[0].yuv (18874368 bytes), "));
}

}  // namespace
}  // namespace end_to_end
