// ./run --adb, with the stand-in device behind a stand-in for adb (adb.sh).

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "tests/end_to_end/run_script.h"

namespace end_to_end {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class Adb : public RunScript {
  protected:
    Adb() {
        fs::create_directories(m_root + "/bin");
        fs::create_directories(m_root + "/camera/offlinecameratest");
        fs::create_directories(m_root + "/camera/metadata");
        fs::copy(PROJECT_FOLDER "/tests/end_to_end/adb.sh", m_root + "/bin/adb");
        EXPECT_EQ(mkfifo((m_root + "/shell").c_str(), 0600), 0);
        SetDevices("192.0.2.7:5555 device\n");
    }

    void SetDevices(const std::string& lines) { Write("devices", lines); }
    void Write(const std::string& name, const std::string& text) {
        std::ofstream(m_root + "/" + name, std::ios::binary) << text;
    }

    // The device that answers, until the test ends.
    void Start(const Words& options = {}) {
        m_device.emplace(Joined({{DEVICESHELL, "--data", m_root + "/camera", "--planes"},
                                 options,
                                 {"--log", m_root + "/log", "--", "bash", m_root + "/bin/adb",
                                  "listen", m_root}}),
                         CrashSettings(), Subprocess::Input::kPipe);
        ASSERT_TRUE(m_device->WaitForNext("ready"));
    }

    Subprocess::Environment Settings() const {
        return CrashSettings({{"PATH", m_root + "/bin:" + getenv("PATH")}, {"ADB_FOLDER", m_root}});
    }
    Finished Run(const Words& arguments) {
        return RunProgram(Joined({{m_root + "/run"}, arguments}), Settings(), 3 * kPatience);
    }
    nlohmann::json ReportOfRun() const {
        return nlohmann::json::parse(ReadFile(m_root + "/out/report.json"), nullptr, false);
    }
    std::string Source() const { return m_root + "/camera/offlinecameratest/4096_3072_RAW10.raw"; }

    std::optional<Subprocess> m_device;
};

TEST_F(Adb, NamesWhatStandsInTheWay) {
    const struct {
        const char* devices;
        Words arguments;
        const char* sentence;
    } cases[] = {{"", {}, "adb finds no device"},
                 {"a device\nb offline\n", {}, "several devices"},
                 {"a device\n", {"b"}, "no device b; adb finds a (device)"},
                 {"a unauthorized\n", {}, "confirm it on its screen"},
                 {"a offline\nb device\n", {"a"}, "adb reconnect"},
                 {"a no permissions (missing udev rules?)\n", {}, "missing udev rules?"},
                 {"a recovery\n", {}, "start its system"}};
    for (const auto& wrong : cases) {
        SetDevices(wrong.devices);
        const Finished finished = Run(Joined({{"--adb"}, wrong.arguments, {"-t", "B2Y"}}));
        EXPECT_EQ(finished.status, 125) << wrong.sentence;
        EXPECT_THAT(finished.err, HasSubstr(wrong.sentence));
    }
    for (const Words& arguments : {Words{"--adb"},
                                   {"--adb", "--planes", "-t", "B2Y"},
                                   {"--stride", "4", "-t", "B2Y"},
                                   {"--adb", "--stride", "0", "-t", "B2Y"},
                                   {"--import", "/no/such"},
                                   {"--import", "/", "-t", "B2Y"}}) {
        EXPECT_EQ(Run(arguments).status, 2) << ::testing::PrintToString(arguments);
    }

    SetDevices("192.0.2.7:5555 device\n");
    Start({"--no-service"});
    EXPECT_THAT(Run({"--adb", "-t", "B2Y"}).err, HasSubstr("no service vendor.zel"));
    m_device.reset();
    fs::remove(m_root + "/camera/metadata");
    Start();
    EXPECT_THAT(Run({"--adb", "-t", "B2Y"}).err, HasSubstr("has no folder /data/vendor/camera/m"));
    fs::create_directory(m_root + "/camera/metadata");
    const std::pair<const char*, const char*> answers[] = {
            {"command -v vexoff\n", "has no vexofflinecameratest"},
            {"test -x\nno", "chmod 755 /vendor/bin/vexofflinecameratest"},
            {"df -k\n/dev/block/dm-1 9000000 8999950 50 100% /data", "has 50 kB free"},
            {"sha256sum\n/system/bin/sh: sha256sum: inaccessible or not found", "no sha256sum"}};
    for (const auto& [answer, sentence] : answers) {
        Write("answer", answer);
        EXPECT_THAT(Run({"--adb", "-t", "B2Y"}).err, HasSubstr(sentence));
    }
    EXPECT_FALSE(fs::exists(m_root + "/out/device")) << "nothing is made before all is checked";
    // A clock that cannot be read, then a log without the tool.
    Write("answer", "date '+\ndate: bad format");
    EXPECT_EQ(Run({"--adb", "-t", "callback"}).status, 0);
    EXPECT_EQ(ReportOfRun()["run"]["status"], 0);
    Write("answer", "logcat\n");
    EXPECT_THAT(Run({"--adb", "-t", "callback"}).err, HasSubstr("no line of the tool in its log"));
}

TEST_F(Adb, BringsFramesForTheDevicesBuffersAndTheReportOfTheRun) {
    Write("camera/offlinecameratest/4096_3072_RAW10.raw", "mine, too short");
    Start();
    const Finished first = Run({"--adb", "192.0.2.7:5555", "-t", "B2Y"});
    EXPECT_EQ(first.status, 0) << first.err;
    EXPECT_EQ(first.out, "cmd: -t=B2Y\nopMode: B2Y=0\nret: =0\n");
    EXPECT_THAT(first.err,
                AllOf(HasSubstr("runs again"), HasSubstr("is now 4096_3072_RAW10.raw.kept-"),
                      HasSubstr("/out/device/offlinecameratest/OfflineAidl_")));
    EXPECT_EQ(fs::file_size(Source()), 5120u * 3072);
    size_t kept = 0;
    for (const auto& entry : fs::directory_iterator(fs::path(Source()).parent_path())) {
        kept += entry.path().string().find(".kept-") != std::string::npos &&
                ReadFile(entry.path()) == "mine, too short";
    }
    EXPECT_EQ(kept, 1u);
    const auto report = ReportOfRun();
    EXPECT_EQ(report["run"]["place"], "device");
    EXPECT_THAT(report["run"]["device"], StartsWith("192.0.2.7:5555, stand-in device"));
    EXPECT_EQ(report["problems"].size(), 0u) << report["problems"];
    EXPECT_EQ(report["dumps"][0]["bytes"], 18874368);
    EXPECT_EQ(report["calls"].size(), 0u);
    EXPECT_THAT(report["missing"].dump(), HasSubstr("binder calls"));
    EXPECT_EQ(report["phases"][0]["name"], "start-up");
    EXPECT_EQ(report["run"]["durationUs"], report["log"].back()["timeUs"]);

    // All is known and there: one run, and nothing is pushed.
    const Finished second = Run({"--adb", "-t", "B2Y"});
    EXPECT_THAT(second.err, AllOf(Not(HasSubstr("pushed")), Not(HasSubstr("runs again"))));
    // What is the device's own, and fits, stays.
    const std::string own(5120 * 3072, 'x');
    Write("camera/offlinecameratest/4096_3072_RAW10.raw", own);
    EXPECT_THAT(Run({"--adb", "-t", "B2Y"}).err, HasSubstr("RAW10.raw of its own"));
    EXPECT_EQ(ReadFile(Source()), own);
    EXPECT_EQ(ReadFile(m_root + "/out/device/offlinecameratest/4096_3072_RAW10.raw"), own);
    // Numbers of the options go before those of the log.
    const Finished other = Run({"--adb", "--stride", "5376", "--scanlines", "3104", "-t", "B2Y"});
    EXPECT_THAT(other.err, AllOf(HasSubstr("3072 rows of 5120 bytes, not what the options say"),
                                 Not(HasSubstr("runs again"))));
    EXPECT_EQ(fs::file_size(Source()), 5376u * 3104);
}

TEST_F(Adb, ADeviceThatGoesAwayLosesNothing) {
    Start();
    EXPECT_EQ(Run({"--adb", "-t", "Y2J"}).status, 0);
    Write("unplug", "^pull");
    const Finished pulled = Run({"--adb", "-t", "Y2J"});
    EXPECT_EQ(pulled.status, 125);
    EXPECT_THAT(pulled.err, AllOf(HasSubstr("failed to read copy"), HasSubstr("could not pull")));
    EXPECT_EQ(ReportOfRun()["run"]["status"], 0);
    SetDevices("192.0.2.7:5555 device\n");
    Write("unplug", "'vexoff");
    EXPECT_THAT(Run({"--adb", "-t", "Y2J"}).err, HasSubstr("went away during the run"));
    SetDevices("192.0.2.7:5555 device\n");
    fs::remove(m_root + "/camera/offlinecameratest/4000_3000_NV12.yuv");
    Write("unplug", "^push");
    EXPECT_THAT(Run({"--adb", "-t", "Y2J"}).err, HasSubstr("could not push 4000_3000_NV12.yuv"));
}

TEST_F(Adb, ASignalEndsTheToolOnTheDevice) {
    Start({"--fault", "no-result"});
    Run({"--adb", "-t", "B2Y"});
    const std::string kill = "\"$0/bin/adb\" shell kill -KILL '$(pidof vexofflinecameratest)'";
    for (const std::string& signal : {"", kill.c_str()}) {
        Write("log", "");
        Subprocess run({m_root + "/run", "--adb", "-t", "B2Y"}, Settings(),
                       Subprocess::Input::kTerminal);
        const std::string wait = "tail -n +1 -F \"$0/log\" | grep -q -m 1 'WaitForResult wait'";
        ASSERT_EQ(RunProgram({"sh", "-c", wait + "\n" + signal, m_root}, Settings()).status, 0);
        if (signal.empty()) run.Type("\x03");
        const Finished finished = run.Finish();
        EXPECT_EQ(finished.status, signal.empty() ? 130 : 137) << finished.out;
        EXPECT_THAT(finished.out, HasSubstr(signal.empty() ? "signal 2" : "signal 9"));
        EXPECT_EQ(ReportOfRun()["run"]["signal"], signal.empty() ? "SIGINT" : "SIGKILL");
        EXPECT_EQ(ReportOfRun()["phases"].back()["name"], "result");
    }
}

// So that the stand-in's sentences are adb's.
TEST_F(Adb, SpeaksLikeTheRealOne) {
    SetDevices("");
    const Subprocess::Environment real = {
            {"HOME", m_root},
            {"ANDROID_ADB_SERVER_PORT", std::to_string(20000 + getpid() % 20000)}};
    for (const Words& words : {Words{"devices"},
                               {"get-state"},
                               {"-s", "x", "shell", "true"},
                               {"shell", "true"},
                               {"-s", "x", "push", "/etc/hosts", "/x"},
                               {"pull", "/x", m_root + "/x"}}) {
        const Finished expected = RunProgram(Joined({{"/usr/bin/adb"}, words}), real);
        const Finished said = RunProgram(Joined({{m_root + "/bin/adb"}, words}), Settings());
        EXPECT_EQ(said.status, expected.status) << ::testing::PrintToString(words);
        EXPECT_EQ(said.out, expected.out);
        const size_t daemon = expected.err.rfind("* daemon started successfully\n");
        EXPECT_EQ(said.err,
                  daemon == std::string::npos ? expected.err : expected.err.substr(daemon + 30));
    }
    RunProgram({"/usr/bin/adb", "kill-server"}, real);
}

}  // namespace
}  // namespace end_to_end
