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
        return Json::parse(end_to_end::ReadFile(Path("report.json")), nullptr, false);
    }

    // dB between the frame's reduced picture and its own, scaled.
    double Likeness(const Json& frame) const {
        const std::string url = frame["picture"];
        std::ofstream(Path("base64")) << url.substr(url.find(',') + 1);
        const Finished compared =
                RunProgram({"sh", "-c", kCompare, OFFLINEFRAMES, Path(""), frame["path"],
                            frame["pictureWidth"].dump(), frame["pictureHeight"].dump()});
        EXPECT_EQ(compared.status, 0) << compared.err;
        return atof(compared.out.c_str() + compared.out.find("all ") + 4);
    }

    const TemporaryFolder m_folder{"a report"};
    end_to_end::DeviceRun m_device;
    std::string m_summary;
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
    EXPECT_GT(Likeness(dump), 27);
}

TEST_F(Report, ShowsReducedPicturesAndTellsOfEmptyFrames) {
    const Json report = OfRun({}, "Y2J");
    ASSERT_THAT(report["dumps"], SizeIs(1));
    EXPECT_EQ(report["sources"][0]["leftUnread"], true);
    EXPECT_EQ(report["problems"].back()["text"], "The input frames were left empty");
    EXPECT_EQ(report["problems"].back()["phase"], "fill");
    EXPECT_THAT(m_summary, StartsWith("run: the input frames were left empty: "));
    EXPECT_EQ(report["dumps"][0]["width"], 4000);
    EXPECT_NE(report["dumps"][0]["picture"], "");

    std::ofstream(Path("photo")) << "P6 2 2 255 \xff\x20\x10\x40\xc0\x20\x30\x30\xff\x80\x80\x80";
    RunProgram({OFFLINEFRAMES, "pack", Path("photo"), Path("small.raw")});
    EXPECT_GT(Likeness(Make({"--dump=" + Path("small.raw")})["dumps"][0]), 40);
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
    EXPECT_THAT(problems, ElementsAre("error in configure: configureOfflineStreams refused: fault "
                                      "switched on",
                                      "error in configure: ConfigureOfflineStreams, FAILED..."));
    EXPECT_THAT(m_summary,
                AllOf(HasSubstr("run: no file was written\nrun: the last one of 1 errors in "),
                      HasSubstr("tool.log: OfflineCameraClient: ConfigureOfflineStreams, FA")));
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
                              "--dump=" + Path("gone.jpg"), "--status=255", "--", "x"});
    EXPECT_EQ(report["missing"], Json({Path("none") + ": cannot open: No such file or directory",
                                       Path("") + ": is not a regular file"}));
    EXPECT_THAT(report["dumps"][0]["note"], HasSubstr("gone.jpg: cannot open"));
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
look(); button('Tool only').click(); look(); button('Whole run').click(); look();
button('Start-up').click(); look();
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
    const std::string whole = R"("0 200 ms 400 ms 600 ms 800 ms")";
    EXPECT_THAT(shown.out,
                HasSubstr(R"(FACTS{"axes":[)" + whole + R"(,"400 ms 450 ms 500 ms 550 ms",)" +
                          whole + R"(,"400 ms 450 ms 500 ms 550 ms 600 ms"],"lines":[7,3,2,0,7])"));
    EXPECT_THAT(shown.out,
                HasSubstr(R"("verdict":["! Finished with 3 errors"],"problems":["&lt;/s)"));
    EXPECT_THAT(shown.out, HasSubstr(R"("found":["&lt;/script&gt;&lt;script&gt;console)"));
}

}  // namespace
}  // namespace runreport
