// Reports of real runs, of damaged and of hostile input, as a browser shows them.

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "tests/end_to_end/run_script.h"
#include "tests/host/tools/runreport/browser.h"
#include "tests/support/temporary_folder.h"

namespace runreport_page {
namespace {

namespace fs = std::filesystem;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;
using Json = nlohmann::json;
using Texts = std::vector<std::string>;

Json parseFile(const std::string& path) {
    return Json::parse(end_to_end::readFile(path), nullptr, false);
}

Texts phases(const Rendered& page) {
    return textsBetween(page.main, "data-phase=\"", "\"");
}
Texts messages(const Rendered& page) {
    return textsBetween(page.main, "<span class=\"message\">", "</span>");
}
std::string verdict(const Rendered& page) {
    const Texts found = textsBetween(page.main, "<h1 id=\"verdict\">", "</h1>");
    return found.size() == 1 ? found[0] : "no verdict";
}
std::string problemWith(const Rendered& page, const std::string& text) {
    for (const std::string& problem : textsBetween(page.main, "<article", "</article>")) {
        if (problem.find(text) != std::string::npos) return problem;
    }
    return "";
}

// Reports that ./run makes.
class RunPage : public end_to_end::RunScript {
  protected:
    RunPage() { end_to_end::linkSources(m_root + "/out/camera"); }

    std::string html() const { return m_root + "/out/report.html"; }
    Json json() const { return parseFile(m_root + "/out/report.json"); }
};

TEST_F(RunPage, ShowsAGoodRun) {
    const auto finished = run({"--planes", "-t", "B2Y"});
    ASSERT_EQ(finished.status, 0) << finished.err;
    EXPECT_THAT(finished.err, HasSubstr("report: " + html()));

    const Json report = json();
    EXPECT_EQ(report["run"]["options"], Json({"--planes"}));
    EXPECT_EQ(report["run"]["command"], Json({"vexofflinecameratest", "-t", "B2Y"}));
    EXPECT_EQ(report["missing"], Json::array());
    int64_t end = 0;
    for (const Json& phase : report["phases"]) {
        EXPECT_EQ(phase["startUs"], end) << phase;
        EXPECT_EQ(phase["end"], "done") << phase;
        end = phase["endUs"].get<int64_t>();
    }
    EXPECT_EQ(report["run"]["durationUs"], end);
    EXPECT_EQ(report["dumps"][0]["bytes"], 18874368);

    const Rendered page = render(html());
    EXPECT_EQ(page.console, "");
    EXPECT_EQ(verdict(page), "Finished");
    EXPECT_THAT(page.main, Not(HasSubstr("<article")));
    EXPECT_THAT(phases(page),
                ElementsAre("device", "start-up", "open", "configure", "allocate", "fill", "submit",
                            "shutter", "result", "dump", "close", "exit"));
    EXPECT_THAT(textsBetween(page.main, "<img src=\"data:image/jpeg;base64,", "\""), SizeIs(2));
    EXPECT_THAT(textsBetween(page.main, "<figcaption>", "</figcaption>"),
                ElementsAre("4096_3072_RAW10.raw FormatRAW10Width × height4096 × 3072"
                            "Stride5,120 bytesScan lines3,072Size15,728,640 bytes",
                            "OfflineAidl_CameraId_2_Frame_1_B2Y_Stride[4096]_Scanline[3072].yuv "
                            "FormatNV12Width × height4000 × 3000"
                            "Stride4,096 bytesScan lines3,072Size18,874,368 bytes"));
    EXPECT_THAT(messages(page), Contains("main: offline camera client exit"));
}

TEST_F(RunPage, ExplainsAFailedRun) {
    const auto finished = run({"--fault", "configure-error", "-t", "B2Y"});
    ASSERT_EQ(finished.status, 0) << finished.err;
    const Rendered page = render(html(), "priority=E&from=tool");
    EXPECT_EQ(page.console, "");
    EXPECT_THAT(verdict(page), StartsWith("Finished with "));
    const std::string problem = problemWith(page, "ConfigureOfflineStreams, FAILED...");
    EXPECT_THAT(problem, HasSubstr("in “Configure”"));
    EXPECT_THAT(problem, HasSubstr("Cause"));
    EXPECT_THAT(problem, HasSubstr("Cure"));
    EXPECT_THAT(messages(page), ElementsAre("ConfigureOfflineStreams, FAILED..."));

    // A refused command leaves this report in place, one that cannot be written changes no status.
    const std::string before = end_to_end::readFile(html());
    EXPECT_EQ(run({"--fault", "no-such-fault", "-t", "B2Y"}).status, 2);
    EXPECT_EQ(end_to_end::readFile(html()), before);
    fs::remove(html());
    fs::create_directory(html());
    const auto usage = run({"-t", "nothing"});
    EXPECT_EQ(usage.status, 255);
    EXPECT_THAT(usage.err, HasSubstr("no report"));
    EXPECT_EQ(json()["run"]["ending"], "usage-error");
}

TEST_F(RunPage, ShowsWhereARunCrashed) {
    const auto finished = run({"--no-service", "-t", "B2Y"});
    ASSERT_GT(finished.status, 128) << finished.err;
    EXPECT_EQ(json()["phases"].back()["end"], "cut-short");
    const Rendered page = render(html(), "text=getService");
    EXPECT_EQ(page.console, "");
    EXPECT_THAT(verdict(page), StartsWith("Ended by SIG"));
    EXPECT_THAT(verdict(page), HasSubstr("during “Open session”"));
    EXPECT_THAT(phases(page), ElementsAre("device", "start-up", "open"));
    EXPECT_THAT(problemWith(page, "getService is NULL"), HasSubstr("Cure"));
    EXPECT_THAT(problemWith(page, "The run was ended by"), HasSubstr("Cure"));
    EXPECT_THAT(messages(page), ElementsAre("getService is NULL for offlinecameraservice"));
    EXPECT_THAT(page.main, HasSubstr("The tool wrote no file."));
}

// Reports of files that no run left.
class AnyPage : public ::testing::Test {
  protected:
    std::string path(const std::string& name) const { return m_folder.path(name); }

    void make(std::vector<std::string> words) const {
        words.insert(words.begin(), {RUNREPORT, "--html=" + path("report.html"),
                                     "--json=" + path("report.json"), "--log=" + path("run.log"),
                                     "--explanations=" PROJECT_FOLDER "/docs/device.md",
                                     "--explanations=" PROJECT_FOLDER "/docs/stand_in.md"});
        const auto made = end_to_end::runProgram(words);
        EXPECT_EQ(made.status, 0) << made.err;
    }

    const TemporaryFolder m_folder{"any page"};
};

TEST_F(AnyPage, LetsNothingThatItShowsActAsMarkup) {
    const std::string script = "</script><script>console.error('ran')</script><!--<script>";
    const std::string image = "<img src=x onerror=console.error('ran')>";
    std::ofstream(path("run.log"))
            << "11-21 21:58:30.041711    24    24 E " << image << ": " << script << "\n"
            << "11-21 21:58:30.041712    24    24 E T: \xff\xfe " << image << "\n";
    std::ofstream(path("a\"'<b>.yuv")) << "short";
    make({"--dump=" + path("a\"'<b>.yuv"), "--option=" + script, "--", "x", image});
    EXPECT_FALSE(parseFile(path("report.json")).is_discarded());
    const Rendered page = render(path("report.html"), "text=" + image);
    EXPECT_EQ(page.console, "");
    EXPECT_THAT(page.main, Not(HasSubstr("<img src=\"x")));
    EXPECT_THAT(messages(page), SizeIs(2));
    EXPECT_THAT(textsBetween(page.main, "<figure>", "</figure>"),
                ElementsAre(HasSubstr("a\"'&lt;b&gt;.yuv")));
}

TEST_F(AnyPage, StaysUsableWithAVeryLongLogAndTrace) {
    {
        std::ofstream log(path("run.log"));
        for (int line = 0; line < 60000; ++line) {
            char text[80];
            snprintf(text, sizeof text, "11-21 21:58:%02d.%06d    24    24 %c Tag: line %d\n",
                     line / 1000 % 60, line % 1000 * 1000, line == 30000 ? 'E' : 'I', line);
            log << text;
        }
        log << "11-21 21:59:30.000000    24    24 I Tag: " << std::string(1000000, 'x');
        std::ofstream trace(path("trace"));
        for (int call = 0; call < 2001; ++call) {
            trace << "21:58:30.000000 24 -> 2/peer a.B.c 0 bytes 0 fds 5 us OK\n";
        }
    }
    make({"--trace=" + path("trace"), "--", "tool"});
    EXPECT_LT(fs::file_size(path("report.html")), 12u * 1024 * 1024);
    const Rendered page = render(path("report.html"));
    EXPECT_EQ(page.console, "");
    EXPECT_THAT(messages(page), SizeIs(1000));
    EXPECT_THAT(textsBetween(page.main, "id=\"shown\">", "</span>"),
                ElementsAre("40,001 lines of 40,001, 20,000 more in the files only"));
    EXPECT_THAT(problemWith(page, "line 30000"), HasSubstr("show in the log"));
    EXPECT_THAT(page.main, HasSubstr("Table of 2,001 binder calls, the first 2,000 shown"));
    EXPECT_THAT(messages(render(path("report.html"), "text=xxx")), ElementsAre(HasSubstr("more]")));
}

// A hand for the timeline of a run of one second: it notes the numbers of the axis at each step.
constexpr char kHand[] = R"(<script>
const svg = document.querySelector('#timeline svg');
const button = (name) => [...document.querySelectorAll('#timeline button')].find(
        (one) => (one.getAttribute('aria-label') || one.textContent) === name);
const note = () => document.getElementById('page').append(make('p', {class: 'axis'},
        [...svg.querySelectorAll(':scope > text')].map((text) => text.textContent).join(' ')));
svg.setPointerCapture = () => {};  // there is no real pointer to capture
const point = (type, part) => {
    const {left, width} = svg.getBoundingClientRect();
    const names = width < 600 ? 110 : 140;
    svg.dispatchEvent(new PointerEvent(
            type, {button: 0, clientX: left + names + part * (width - 12 - names)}));
};
const drag = (from, to) => { point('pointerdown', from); point('pointerup', to); };
queueMicrotask(() => {
    note(); button('zoom in').click(); note(); button('zoom out').click(); note();
    drag(0.8, 0.4); note(); svg.dispatchEvent(new MouseEvent('dblclick')); note();
});
</script>)";

TEST_F(AnyPage, ShowsTheStretchOfTimeThatAHandChooses) {
    std::ofstream(path("run.log")) << "11-21 21:58:30.041711    24    24 I T: a line\n";
    make({"--started=1000", "--ended=1001", "--", "tool"});
    std::ofstream(path("report.html"), std::ios::app) << kHand;
    const Rendered page = render(path("report.html"));
    EXPECT_EQ(page.console, "");
    const std::string whole = "0 200 ms 400 ms 600 ms 800 ms";
    EXPECT_THAT(textsBetween(page.main, "<p class=\"axis\">", "</p>"),
                ElementsAre(whole, "300 ms 400 ms 500 ms 600 ms 700 ms", whole,
                            "400 ms 500 ms 600 ms 700 ms", whole));
}

TEST_F(AnyPage, NamesWhatItCouldNotRead) {
    fs::create_directory(path("trace"));
    make({"--trace=" + path("trace"), "--dump=" + path("gone.jpg"), "--", "tool"});
    const Rendered page = render(path("report.html"), "priority=Q&from=&text");
    EXPECT_EQ(page.console, "");
    const Texts missing = textsBetween(page.main, "<li class=\"mono\">", "</li>");
    EXPECT_THAT(missing, Contains(HasSubstr("run.log: cannot open: No such file")));
    EXPECT_THAT(missing, Contains(HasSubstr("trace: is not a regular file")));
    EXPECT_THAT(page.main, HasSubstr("gone.jpg: cannot open"));
    EXPECT_THAT(page.main, HasSubstr("There is no log."));
    EXPECT_THAT(phases(page), IsEmpty());
}

}  // namespace
}  // namespace runreport_page
