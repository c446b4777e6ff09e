// Reports of runs on devices, from folders with a log in logcat's formats.

#include <gmock/gmock.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "tests/end_to_end/device_run.h"

namespace runreport {
namespace {

using end_to_end::Finished;
using end_to_end::RunProgram;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using Json = nlohmann::json;
using Words = std::vector<std::string>;

struct Logged {
    int millis;
    int pid;
    int tid;
    char priority;
    const char* tag;
    std::string message;
};

constexpr char kTool[] = "OfflineCameraTest", kClient[] = "OfflineCameraClient";

// A run of Y2J up to its request.
std::vector<Logged> Begun(int millis, int pid) {
    return {{millis, pid, pid, 'I', kTool, "main: offline camera client connect to service "},
            {millis + 10, pid, pid, 'I', kTool, "main: offline camera client opMode 1"},
            {millis + 20, pid, pid, 'I', kClient, "OpenOfflineSession"},
            {millis + 30, pid, pid, 'I', kTool, "ProcessOfflineRequest"},
            {millis + 40, pid, pid, 'I', kClient,
             "input streamId 0, bufferStride 4096, bufferScanline 3072 buffer 0x12 width 4000"},
            {millis + 50, pid, pid + 7, 'I', kClient, "notify: callback notify"}};
}

std::vector<Logged> Ended(int millis, int pid) {
    return {{millis, pid, pid, 'I', kClient, "CloseOfflineSession"},
            {millis + 1, pid, pid, 'I', kTool, "main: offline camera client exit"}};
}

// The block that a device logs of a process with a fault, from a process of its own.
std::vector<Logged> Crash(int millis, int pid, const std::string& program, const char* cause) {
    const std::string number = std::to_string(pid);
    std::vector<Logged> lines = {
            {millis, pid, pid, 'F', "libc",
             "Fatal signal 11 (SIGSEGV), code 1 (SEGV_MAPERR), fault addr 0x0 in tid " + number +
                     " (name), pid " + number + " (name)"}};
    for (const std::string& text :
         {std::string("*** *** *** ***"), "Cmdline: " + program,
          "pid: " + number + ", tid: " + number + ", name: name  >>> " + program + " <<<",
          std::string("signal 11 (SIGSEGV), code 1 (SEGV_MAPERR), fault addr 0x0"),
          std::string("Cause: ") + cause, std::string("backtrace:"),
          std::string("      #00 pc 0000a2b4  /vendor/lib64/liba.so (Inner(int)+12) (BuildId: 01)"),
          std::string("      #01 pc 0000b000  /vendor/bin/b (main+64) (BuildId: 02)")}) {
        lines.push_back({millis + 5, pid + 50, pid + 50, 'F', "DEBUG", text});
    }
    return lines;
}

std::vector<Logged> operator+(std::vector<Logged> a, const std::vector<Logged>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

enum class Format { kThreadTime, kTime, kBrief };

std::string TextOf(const std::vector<Logged>& lines, Format format, const char* end = "\n") {
    std::string text = std::string("--------- beginning of main") + end;
    for (const Logged& line : lines) {
        char time[32], head[96];
        snprintf(time, sizeof time, "11-22 10:00:%02d.%03d", line.millis / 1000,
                 line.millis % 1000);
        if (format == Format::kThreadTime) {
            snprintf(head, sizeof head, "%s %5d %5d %c %-8s: ", time, line.pid, line.tid,
                     line.priority, line.tag);
        } else {
            snprintf(head, sizeof head, "%s%s%c/%-8s(%5d): ", format == Format::kTime ? time : "",
                     format == Format::kTime ? " " : "", line.priority, line.tag, line.pid);
        }
        text += head + line.message + end;
    }
    return text;
}

class Import : public ::testing::Test {
  protected:
    void Write(const std::string& name, const std::string& text) {
        std::ofstream(m_folder.Path(name), std::ios::binary) << text;
    }

    Finished Run(const Words& options) {
        Words words = {RUNREPORT, "--summary", "--import=" + m_folder.Path(),
                       "--html=" + m_out.Path("html"), "--json=" + m_out.Path("json")};
        words.insert(words.end(), options.begin(), options.end());
        return RunProgram(words);
    }

    Json Report(const Words& options = {}) {
        const Finished made = Run(options);
        EXPECT_EQ(made.status, 0) << made.err;
        const Finished valid = RunProgram(
                {"/usr/bin/python3", "-m", "jsonschema", "-i", m_out.Path("json"), REPORT_SCHEMA});
        EXPECT_EQ(valid.status, 0) << valid.err;
        return Json::parse(end_to_end::ReadFile(m_out.Path("json")), nullptr, false);
    }

    const TemporaryFolder m_folder{"import"};
    const TemporaryFolder m_out{"imported"};
};

TEST_F(Import, TellsACrashFromEveryFormat) {
    const auto log = Begun(1000, 40) + Ended(1100, 40) + Begun(5000, 41) +
                     Crash(5100, 700, "/vendor/bin/camera", "stack overflow") +
                     Crash(5200, 41, "vexofflinecameratest", "null pointer dereference") +
                     Crash(40'000, 90, "later", "of no interest") +
                     std::vector<Logged>{{5060, 3, 3, 'E', "Other", "not of this run"}};
    for (const auto format : {Format::kThreadTime, Format::kTime, Format::kBrief}) {
        Write("logcat.txt", TextOf(log, format, format == Format::kTime ? "\r\n" : "\n"));
        const Json report = Report();
        const Json& problems = report["problems"];
        ASSERT_GE(problems.size(), 2u);
        EXPECT_EQ(problems[0]["text"], "/vendor/bin/camera was ended by signal 11 (SIGSEGV)");
        EXPECT_THAT(std::string(problems[0]["cause"]),
                    AllOf(HasSubstr("stack overflow"), HasSubstr("liba.so (Inner(int)+12)`"),
                          HasSubstr("#01")));
        EXPECT_THAT(std::string(problems.back()["cause"]) + std::string(problems[1]["cause"]),
                    HasSubstr("null pointer dereference"));
        EXPECT_EQ(report["run"]["status"], 139);
        EXPECT_EQ(report["run"]["place"], "imported");
        EXPECT_EQ(report["log"][0]["pid"], 41);
        EXPECT_THAT(report["log"].dump(), Not(HasSubstr("not of this run")));
        EXPECT_EQ(report["log"].dump().find("of no interest") == std::string::npos,
                  format != Format::kBrief);  // without times, any crash may belong to the run
        EXPECT_EQ(report["log"][5]["timeUs"], format == Format::kBrief ? 0 : 50'000);
        EXPECT_EQ(report["missing"].dump().find("threads") == std::string::npos,
                  format == Format::kThreadTime);
    }
}

TEST_F(Import, TakesTheLastRunOrThatOfAProcess) {
    // A number that was used again, and a run of which the log has only the end.
    Write("run.log", TextOf(Ended(10, 39) + Begun(1000, 40) + Ended(1100, 40) + Begun(2000, 41) +
                                    Begun(3000, 40) + Ended(3500, 40),
                            Format::kThreadTime));
    const std::string dump = "OfflineAidl_CameraId_2_Frame_1_Y2J_Width[4000]_Height[3000].jpg";
    Write(dump, "");
    Write("OfflineAidl_CameraId_2_Frame_1_B2Y_Stride[4096]_Scanline[3072].yuv", "");
    const Json last = Report();
    EXPECT_EQ(last["run"]["durationUs"], 501'000);
    EXPECT_EQ(last["run"]["status"], Json());
    EXPECT_EQ(last["problems"].size(), 0u) << last["problems"];
    ASSERT_EQ(last["dumps"].size(), 1u);
    EXPECT_THAT(std::string(last["dumps"][0]["path"]), HasSubstr(dump));
    const Json other = Report({"--pid", "41"});
    EXPECT_EQ(other["problems"][0]["text"], "The log ends before the run did");
    EXPECT_EQ(Report({"--pid", "39"})["log"].size(), 2u);
    const Finished none = Run({"--pid", "42"});
    EXPECT_EQ(none.status, 2);
    EXPECT_THAT(none.err, HasSubstr("process 42"));
}

TEST_F(Import, NothingInALogDoesHarm) {
    for (const std::string& junk :
         {std::string(), std::string(3'000'000, '('), std::string(100'000, '\0'),
          std::string("11-22 10:00:00.0 1 1 I OfflineCameraTest"), std::string("I/(: ): x\n"),
          std::string("\xff\xfe") + std::string("1\0001\0", 4)}) {
        Write("log", junk);
        EXPECT_EQ(Run({}).status, 2);
        EXPECT_THAT(Run({}).err, HasSubstr("no log of the tool"));
    }
    Write("log", TextOf(Begun(0, 1), Format::kThreadTime) + std::string(1'000'000, '\xc3') +
                         "\n11-22 99:99:99.9 1 1 E OfflineCameraTest: </script><script>alert(1)" +
                         std::string(10'000, 'x') + "\n11-22 : 1 2 E OfflineCameraTest: y\n");
    const Json report = Report();
    EXPECT_EQ(report["log"].size(), 8u);
    EXPECT_THAT(report["log"].dump(), HasSubstr("bytes more]"));
    EXPECT_THAT(end_to_end::ReadFile(m_out.Path("html")), Not(HasSubstr("<script>alert")));
}

}  // namespace
}  // namespace runreport
