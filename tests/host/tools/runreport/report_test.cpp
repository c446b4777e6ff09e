// Reports of real runs and of damaged input, by their JSON; and the page in a browser.

#include <gmock/gmock.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "tests/end_to_end/device_run.h"

namespace runreport {
namespace {

using end_to_end::Finished;
using end_to_end::RunProgram;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;
using Json = nlohmann::json;
using Words = std::vector<std::string>;

// Compares the picture in the page, in the file "base64", with the frame's own picture, which
// offlineframes scales to its size. Words: offlineframes, folder, frame, width, height.
constexpr char kCompare[] = R"(
    cd "$1" && rm -f big.png scaled.* && base64 -d base64 >small.jpg || exit
    "$0" view --as-stored "$2" big.png 2>/dev/null || "$0" view "$2" big.png || exit
    shape="--format nv12 --size $3x$4 --stride $3 --scanlines $4"
    "$0" pack $shape big.png scaled.yuv && "$0" view $shape scaled.yuv scaled.png || exit
    "$0" compare small.jpg scaled.png)";

class Report : public ::testing::Test {
  protected:
    std::string Path(const std::string& name) const { return m_folder.Path(name); }

    // Runs the tool in the stand-in device and makes its report.
    Json OfRun(const Words& options, const std::string& mode) {
        const std::string started = std::to_string(time(nullptr));
        const auto run = m_device.With(options).With({"--trace", Path("trace")}).Tool({"-t", mode});
        const std::string folder = m_device.Folder();
        Words words = {"--log",        folder + "/tool.log",
                       "--device-log", folder + "/device.log",
                       "--trace",      Path("trace"),
                       "--data",       folder,
                       "--started",    started,
                       "--ended",      std::to_string(time(nullptr) + 1),
                       "--status",     std::to_string(run.status)};
        for (const std::string& option : options) words.push_back("--option=" + option);
        for (const auto& dump : run.dumps) {
            words.insert(words.end(), {"--dump", m_device.DumpPath(dump.first)});
        }
        words.insert(words.end(), {"--", "vexofflinecameratest", "-t", mode});
        return Make(words);
    }

    // The lines of --summary go to m_summary.
    Json Make(Words words) {
        words.insert(words.begin(), {RUNREPORT, "--summary", "--html=" + Path("report.html"),
                                     "--json=" + Path("report.json")});
        const Finished made = RunProgram(words);
        EXPECT_EQ(made.status, 0) << made.err;
        m_summary = made.err;
        const std::string page = end_to_end::ReadFile(Path("report.html"));
        const std::string mark = "id=\"report\">";
        const size_t begin = page.find(mark) + mark.size();
        m_page = Json::parse(page.substr(begin, page.find("</script>", begin) - begin), nullptr,
                             false);
        const Finished valid = RunProgram(
                {"/usr/bin/python3", "-m", "jsonschema", "-i", Path("report.json"), REPORT_SCHEMA});
        EXPECT_EQ(valid.status, 0) << valid.out << valid.err;
        return Json::parse(end_to_end::ReadFile(Path("report.json")), nullptr, false);
    }

    // The same for hand-written logs and trace of 10 s. Each line begins with its part of a second
    // of 21:58:30, as in ".250 24 24 I T: message". Gives severity, text and cause.
    Words ProblemsOf(const std::string& log, const std::string& deviceLog, const std::string& trace,
                     Words words = {}) {
        const auto write = [&](const char* name, const std::string& date, std::string text) {
            for (size_t at = text.find("\n."); at != text.npos; at = text.find("\n.", at + 1)) {
                text.insert(at + 5, "000");
                text.insert(at + 1, date + "21:58:30");
            }
            std::ofstream(Path(name)) << text.erase(0, 1);
        };
        write("run.log", "11-21 ", log);
        write("device.log", "11-21 ", deviceLog);
        write("trace.log", "", trace);
        tm local = {};
        strptime("2026-11-21 21:58:30", "%F %T", &local);
        local.tm_isdst = -1;
        const time_t started = mktime(&local);
        words.insert(words.begin(),
                     {"--log", Path("run.log"), "--device-log", Path("device.log"), "--trace",
                      Path("trace.log"), "--started", std::to_string(started), "--ended",
                      std::to_string(started + 10)});
        Words problems;
        const Json report = Make(words);
        for (const Json& problem : report["problems"]) {
            problems.push_back(problem["severity"].get<std::string>() + ": " +
                               problem["text"].get<std::string>() + " | " +
                               problem["cause"].get<std::string>());
        }
        return problems;
    }

    // dB between the first dump's reduced picture, of this size, and its own, scaled.
    double Likeness(const std::string& width, const std::string& height) const {
        const Json& frame = m_page["dumps"][0];
        const std::string url = frame["picture"];
        std::ofstream(Path("base64")) << url.substr(url.find(',') + 1);
        const Finished compared = RunProgram(
                {"sh", "-c", kCompare, OFFLINEFRAMES, Path(""), frame["path"], width, height});
        EXPECT_EQ(compared.status, 0) << compared.err;
        return atof(compared.out.c_str() + compared.out.find("all ") + 4);
    }

    const TemporaryFolder m_folder{"a report"};
    end_to_end::DeviceRun m_device;
    std::string m_summary;
    Json m_page;  // what the page is made of
};

TEST_F(Report, TellsEveryStepOfAGoodRun) {
    const Json report = OfRun({"--planes"}, "B2Y");
    EXPECT_EQ(m_summary, "");
    EXPECT_EQ(report["run"]["options"], Json({"--planes"}));
    EXPECT_EQ(report["run"]["command"], Json({"vexofflinecameratest", "-t", "B2Y"}));
    EXPECT_EQ(report["run"]["durationUs"], report["phases"].back()["endUs"]);
    EXPECT_EQ(report["missing"].size() + report["problems"].size(), 0u) << report["problems"];
    Words phases;
    for (const Json& phase : report["phases"]) phases.push_back(phase["name"]);
    EXPECT_THAT(phases,
                ElementsAre("device", "start-up", "open", "configure", "fill", "allocate", "fill",
                            "allocate", "submit", "shutter", "result", "dump", "close", "exit"));
    EXPECT_GT(report["calls"].size(), 10u);
    ASSERT_THAT(report["sources"], SizeIs(1));
    ASSERT_THAT(report["dumps"], SizeIs(1));
    const Json& source = report["sources"][0];
    EXPECT_EQ(source["format"].dump() + source["width"].dump() + source["stride"].dump(),
              "\"RAW10\"40965120");
    const Json& dump = report["dumps"][0];
    EXPECT_EQ(dump["bytes"], 18874368);
    EXPECT_EQ(dump["format"].dump() + dump["height"].dump() + dump["scanlines"].dump(),
              "\"NV12\"30003072");
    EXPECT_GT(Likeness("800", "600"), 27);
}

TEST_F(Report, ShowsReducedPicturesAndTellsOfEmptyFrames) {
    const Json report = OfRun({}, "Y2J");
    ASSERT_THAT(report["dumps"], SizeIs(1));
    EXPECT_EQ(report["sources"][0]["leftUnread"], true);
    EXPECT_EQ(report["problems"][0]["text"], "The input frames were left empty");
    EXPECT_EQ(report["problems"][0]["phase"], "fill");
    EXPECT_THAT(m_summary, StartsWith("run: the input frames were left empty: "));
    EXPECT_EQ(report["dumps"][0]["width"], 4000);
    EXPECT_NE(m_page["dumps"][0]["picture"], "");

    std::ofstream(Path("photo")) << "P6 2 2 255 \xff\x20\x10\x40\xc0\x20\x30\x30\xff\x80\x80\x80";
    RunProgram({OFFLINEFRAMES, "pack", Path("photo"), Path("small.raw")});
    Make({"--dump=" + Path("small.raw")});
    EXPECT_GT(Likeness("682", "512"), 40);
}

TEST_F(Report, ExplainsAFailedRun) {
    const Json report = OfRun({"--fault", "configure-error"}, "B2Y");
    Words problems;
    for (const Json& problem : report["problems"]) {
        problems.push_back(problem["severity"].get<std::string>() + " in " +
                           problem["phase"].get<std::string>() + ": " +
                           problem["text"].get<std::string>());
        EXPECT_FALSE(problem["cause"] == "" || problem["cure"] == "") << problem;
    }
    EXPECT_THAT(problems,
                ElementsAre("error in configure: The call configureOfflineStreams was refused: "
                            "EX_SERVICE_SPECIFIC 4: fault switched on",
                            "error in configure: ConfigureOfflineStreams, FAILED..."));
    EXPECT_THAT(m_summary, StartsWith("run: no file was written\nrun: first of 2 errors: the call "
                                      "configureOfflineStreams was refused: EX_SERV"));
}

TEST_F(Report, TellsWhichCallWentWrongAndWhy) {
    EXPECT_THAT(
            ProblemsOf(R"(
.100 24 24 I T: main: offline camera client opMode 0
.430 24 24 E T: ProcessOfflineRequest, FAILED...
.440 24 24 I T: main: offline camera client exit)",
                       R"(
.200 7 8 I S: works
.300 7 8 E S: gives up
assertion failed
.450 1 1 E deviceshell: my-service was ended by signal 6 (Aborted))",
                       R"(
.400 24 24 -> 7/my-service a.b.processOfflineRequest 1 bytes 0 fds begins
.400 24 24 -> 7/my-service a.b.processOfflineRequest 1 bytes 0 fds 9000 us DEAD_OBJECT)"),
            ElementsAre(
                    "error: my-service was ended by signal 6 (Aborted) | It ended without an "
                    "answer to the tool's "
                    "call `processOfflineRequest`. Its last line in the log: `assertion failed`.",
                    "error: gives up | ",
                    "error: ProcessOfflineRequest, FAILED... | A consequence: "
                    "`processOfflineRequest` failed with DEAD_OBJECT."));
    EXPECT_THAT(m_summary, StartsWith("run: first of 3 errors: my-service was ended by signal 6"));

    EXPECT_THAT(ProblemsOf(R"(
.100 24 24 I T: request id frameNumber:-1 return frameNumber 195936478)",
                           "", ""),
                ElementsAre(StartsWith("error: An unset return value was taken for an answer")));

    EXPECT_THAT(ProblemsOf(R"(
.100 24 24 I T: main: offline camera client opMode 0
.300 24 24 I T: CloseOfflineSession)",
                           R"(
.200 7 8 E S: open refused: no)",
                           R"(
.199 24 24 -> 7/s a.b.openOfflineSession 1 bytes 0 fds 2000 us OK, answered EX_X 5: no
.250 24 24 -> 7/s a.b.openOfflineSession 1 bytes 0 fds 1000 us OK
.260 24 31 <- 7/s a.b.notify 1 bytes 0 fds 10 us OK, answered EX_SERVICE_SPECIFIC 1: X
.300 24 24 -> 7/s a.b.closeOfflineSession 1 bytes 0 fds 1000 us OK
.310 24 31 <- 7/s a.b.notify 1 bytes 0 fds 10 us OK
.320 24 24 -> 7/s a.b.unregisterClient 1 bytes 0 fds begins)",
                           {"--status=143"}),
                ElementsAre("error: The call openOfflineSession was refused: EX_X 5: no | The "
                            "service answered the tool's call with this status and message.",
                            "error: The call openOfflineSession gave no session | It was answered "
                            "OK.",
                            "warning: The tool refused notify: EX_SERVICE_SPECIFIC 1: X | The list "
                            "in the call was empty.",
                            "warning: A callback came after the session was closed | `notify` came "
                            "9.0 ms after the answer to `closeOfflineSession`.",
                            "error: The call unregisterClient was not answered | It went on for "
                            "9.68 s, until the run was ended.",
                            "error: The run was ended by SIGTERM | It came while the tool waited "
                            "for an answer to its call `unregisterClient`."));

    EXPECT_THAT(
            ProblemsOf(R"(
.100 24 24 I T: main: offline camera client connect to service 
.200 24 24 E T: getService is NULL for offlinecameraservice
.300 24 24 I T: main: offline camera client opMode 0)",
                       "", R"(
.190 24 24 -> 7/s ?.(descriptor) 1 bytes 0 fds 10 us OK
.310 24 31 <- 7/s a.b.requestStreamBuffers 1 bytes 0 fds begins)",
                       {"--status=139"}),
            ElementsAre("error: getService is NULL for offlinecameraservice | A service is "
                        "registered by that name, in process 7/s, but it has another interface.",
                        "error: The run was ended by SIGSEGV | It came while the tool served "
                        "the service's call `requestStreamBuffers`."));
}

// Of a request from .100 on, whose waits end at .200 and .300.
constexpr char kWaits[] = R"(
.100 24 24 I T: ProcessOfflineRequest
.150 24 24 I T: WaitCaptureResultCompleted result frameNum is 1
.150 24 24 I T: WaitForShutter frame 1 time 5000
.200 24 24 I T: WaitForShutter frame 1 received 0
.200 24 24 I T: WaitForResult result timeout_ms 5000
)";
constexpr char kWaitsEnd[] = R"(
.300 24 24 I T: WaitForResult received is 0)";

std::string Incoming(const char* time, const std::string& method) {
    return std::string("\n") + time + " 24 31 <- 7/s a.b." + method + " 1 bytes 0 fds 10 us OK";
}

TEST_F(Report, TellsWhatCameInPlaceOfShutterAndResult) {
    const std::string shutter = "warning: No shutter message came in time | ";
    const std::string result = "error: No complete result came in time | ";
    const std::string nothing = Incoming(".010", "x");
    EXPECT_THAT(ProblemsOf(std::string(kWaits) + kWaitsEnd, "", nothing),
                ElementsAre(shutter + "No `notify` reached the tool.",
                            result + "No `processCaptureResult` reached the tool."));
    EXPECT_EQ(m_summary,
              "run: no complete result came in time: No processCaptureResult reached "
              "the tool.\nrun: no shutter message came in time: No notify reached the "
              "tool.\n");
    EXPECT_THAT(ProblemsOf(std::string(kWaits) + kWaitsEnd, "",
                           Incoming(".090", "notify") + Incoming(".350", "processCaptureResult")),
                ElementsAre(shutter + "No `notify` reached the tool after the request; what came "
                                      "before it is forgotten.",
                            result + "No `processCaptureResult` reached the tool before the wait "
                                     "was over; one came 50.0 ms after it."));
    const std::string names = "24 24 I T: ContainsTheSameBuffers ";
    EXPECT_THAT(
            ProblemsOf(kWaits +
                               (".250 24 31 I T: ProcessOfflineResult: outframeinfo "
                                "numPartialMetadata 1 frame numbrer 1 buffer size 1 \n.251 " +
                                names + "result streamId  1 bufferId  9\n.251 " + names +
                                "request streamId  1 bufferId  2") +
                               kWaitsEnd,
                       "",
                       Incoming(".110", "notify") + Incoming(".190", "notify") +
                               Incoming(".250", "processCaptureResult")),
            ElementsAre(shutter + "2 calls of `notify` reached the tool in time. It keeps the "
                                  "messages of the last call only, and had no shutter of frame 1 "
                                  "when it looked: a later call replaced it, or it was in none.",
                        result + "The result of frame 1 names buffer 9 of stream 1; the request "
                                 "has buffer 2 of stream 1."));
    EXPECT_THAT(
            ProblemsOf(kWaits +
                               std::string(".250 24 31 I T: ProcessOfflineResult: outframeinfo "
                                           "numPartialMetadata 1 frame numbrer 9 buffer") +
                               kWaitsEnd,
                       "", Incoming(".110", "notify") + Incoming(".250", "processCaptureResult")),
            ElementsAre(shutter + "One `notify` reached the tool in time, without a shutter of "
                                  "frame 1.",
                        result + "The results were of frame 9, not of frame 1."));
}

TEST_F(Report, TellsWhichBytesOfADumpAreThePicture) {
    Make({"--dump=" + m_device.Folder() + "/offlinecameratest/mmf_fd.yuv"});
    const std::string url = m_page["dumps"][0]["picture"];
    std::ofstream(Path("base64")) << url.substr(url.find(',') + 1);
    const Finished made = RunProgram({"sh", "-c",
                                      "cd \"$0\" && base64 -d base64 >a.jpg && stat -c %s a.jpg && "
                                      "head -c 9000 /dev/zero >>a.jpg",
                                      Path("")});
    const int bytes = atoi(made.out.c_str());
    const std::string size = std::to_string(bytes), all = std::to_string(bytes + 9000);
    const std::string trailer = " The blob's trailer says 5000 bytes";
    EXPECT_THAT(ProblemsOf(R"(
.100 24 24 I T: blob structure info Id 255, JPEGBlobSize 5000, bufSize 24, imageSize 48000000, kM
.100 24 24 I T: imageSize 48000000 bufferSize  24000000)",
                           "", "", {"--dump=" + Path("a.jpg")}),
                ElementsAre("error: The dump was cut short | The tool set out to write 48000000 "
                            "bytes, and the file has " +
                                    all + "." + trailer + ".",
                            "warning: The picture is only the beginning of the file | The JPEG is "
                            "the first " +
                                    size + " of the file's " + all + " bytes." + trailer +
                                    "; for less than 262152 the tool writes width × height × 4."));
}

TEST_F(Report, TellsWhereARunCrashed) {
    const Json report = OfRun({"--no-service"}, "B2Y");
    EXPECT_EQ(report["run"]["ending"], "signal");
    EXPECT_EQ(report["phases"].back()["end"], "cut-short");
    EXPECT_THAT(report["problems"].back()["text"], StartsWith("The run was ended by SIG"));
    EXPECT_NE(report["problems"].back()["cure"], "");
    EXPECT_THAT(m_summary, StartsWith("run: the tool was ended by signal "));
}

TEST_F(Report, NamesWhatItCouldNotRead) {
    OfRun({}, "callback");
    EXPECT_EQ(m_summary, "");  // no session was opened: no file to expect
    const Json report = Make({"--log=" + Path("none"), "--trace=" + Path(""),
                              "--dump=" + Path("gone.raw"), "--status=255", "--", "x"});
    EXPECT_EQ(report["missing"], Json({Path("none") + ": cannot open: No such file or directory",
                                       Path("") + ": is not a regular file"}));
    EXPECT_THAT(report["dumps"][0]["note"], HasSubstr("gone.raw: cannot open"));
    EXPECT_EQ(report["run"]["ending"], "usage-error");
    EXPECT_EQ(RunProgram({RUNREPORT, "--html=" + Path("")}).status, 1);
    EXPECT_EQ(RunProgram({RUNREPORT, "--started=soon", "--summary"}).status, 2);
}

// A hand for the page of a run of one second, in which the tool works from 0.4 to 0.6 s: it notes
// the numbers of the axis and the lines of the log at each step.
constexpr char kHand[] = R"(<script>
const words = (selector) => [...document.querySelectorAll(selector)].map((one) => one.textContent);
const axes = [], lines = [];
const look = () => axes.push(words('.axis span').filter(Boolean).join(' '));
const read = () => lines.push(words('.row:not([hidden]) .message').length);
const button = (name) => [...document.querySelectorAll('button')]
        .find(({textContent}) => textContent === name);
const choose = (name, value) => {
    const filter = document.querySelector(`[name=${name}]`);
    filter.value = value;
    filter.dispatchEvent(new Event('input'));
};
look(); button('Start-up').click(); look(); button('Whole run').click(); look();
read(); choose('priority', 'E'); read(); choose('text', 'ONERROR'); read();
choose('from', 'services'); read();
addEventListener('hashchange', () => {
    read();
    const seen = {axes, lines, verdict: words('h1'), problems: words('article h3'),
                  found: words(':target .message')};
    document.body.append(`FACTS${JSON.stringify(seen)}FACTS`);
});
document.querySelector('article a').click();
</script>)";

TEST_F(Report, IsAPageThatLetsNothingActAsMarkup) {
    const std::string script = "</script><script>console.error('ran')</script><!--<script>";
    const std::string image = "<img src=x onerror=console.error('ran')>";
    std::ofstream(Path("run.log"))
            << "11-21 21:58:30.000000     2     2 Q T: no log line\n"
            << "11-21 21:58:30.000000    24    24 I T: a line\n"
            << "11-21 21:58:30.400000    24    24 I T: main: offline camera client connect to "
               "service \n"
            << "11-21 21:58:30.500000    24    24 E " << image << ": " << script << "\n"
            << "11-21 21:58:30.500000    24    24 E T: \xff\xfe " << image << "\n"
            << "11-21 21:58:30.500000    24    24 E T: another\n"
            << "11-21 21:58:30.600000    24    24 I T: main: offline camera client exit\n";
    std::ofstream(Path("a\"'<b>.yuv")) << "short";
    Make({"--ended=1", "--log=" + Path("run.log"), "--dump=" + Path("a\"'<b>.yuv"),
          "--option=" + script, "--", "x", image});
    std::ofstream(Path("report.html"), std::ios::app) << kHand;
    const Finished shown = RunProgram(
            {"chromium", "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic",
             "--no-first-run", "--disable-background-networking", "--disable-component-update",
             "--disable-sync", "--disable-dev-shm-usage", "--enable-logging=stderr",
             "--user-data-dir=" + Path("browser"), "--dump-dom", "file://" + Path("report.html")},
            {{"HOME", Path("browser")}});
    EXPECT_THAT(shown.err, Not(HasSubstr("CONSOLE")));
    EXPECT_THAT(shown.out, Not(HasSubstr("<img src=\"x")));
    EXPECT_THAT(shown.out, HasSubstr("a\"'&lt;b&gt;.yuv </div>"));
    EXPECT_THAT(shown.out,
                HasSubstr(R"(FACTS{"axes":["0 500 ms","400 ms 500 ms 600 ms","0 500 ms"],)"
                          R"("lines":[7,3,2,0,7])"));
    EXPECT_THAT(shown.out,
                HasSubstr(R"("verdict":["! Finished with 3 errors"],"problems":["&lt;/s)"));
    EXPECT_THAT(shown.out, HasSubstr(R"("found":["&lt;/script&gt;&lt;script&gt;console)"));
}

}  // namespace
}  // namespace runreport
