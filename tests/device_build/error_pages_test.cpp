// docs/device.md and docs/stand_in.md explain what the sources say, all of it and nothing else.

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>

#include "host/tools/explanations/explanations.h"
#include "tests/device_build/log_texts.h"
#include "tests/device_build/stand_in_texts.h"

namespace device_build {
namespace {

namespace fs = std::filesystem;
using explanations::Explanation;
using explanations::MatchesLine;

std::string ReadText(const fs::path& path) {
    std::ifstream file(path);
    EXPECT_TRUE(file) << path;
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// What is the tool's own, and what is the stand-in device's.
struct Pages {
    std::vector<Explanation> statuses;
    std::vector<Explanation> tool;
    std::vector<Explanation> standIn;
};

Pages ReadPages() {
    const std::string device = ReadText(fs::path(PROJECT_FOLDER) / "docs/device.md");
    std::istringstream statuses(device), tool(device);
    std::ifstream standIn(fs::path(PROJECT_FOLDER) / "docs/stand_in.md");
    return {explanations::ReadExitStatuses(statuses), explanations::ReadExplanations(tool),
            explanations::ReadExplanations(standIn)};
}

TEST(ErrorPages, EveryEntryHasCauseAndCureAndStandsOnce) {
    const Pages pages = ReadPages();
    std::set<std::string> lines;
    for (const std::vector<Explanation>* section : {&pages.statuses, &pages.tool, &pages.standIn}) {
        EXPECT_FALSE(section->empty());
        for (const Explanation& entry : *section) {
            EXPECT_FALSE(entry.cause.empty()) << entry.line;
            EXPECT_FALSE(entry.cure.empty()) << entry.line;
            EXPECT_TRUE(lines.insert(entry.line).second) << entry.line << ": twice";
        }
    }
}

// An entry may be about one value of a text: "reason …" is explained by each reason.
TEST(ErrorPages, EveryErrorAndWarningOfTheToolHasAnEntryAndEveryEntryItsText) {
    const std::vector<Explanation> entries = ReadPages().tool;
    const std::vector<LogText> texts = ReadLogTexts(PROJECT_FOLDER);
    for (const LogText& text : texts) {
        const bool explained = std::any_of(
                entries.begin(), entries.end(),
                [&](const Explanation& entry) { return MatchesLine(text.text, entry.line); });
        if (text.priority == 'E' || text.priority == 'W') {
            EXPECT_TRUE(explained) << text.place << ": " << text.text << ": no entry";
        }
    }
    for (const Explanation& entry : entries) {
        EXPECT_TRUE(std::any_of(
                texts.begin(), texts.end(),
                [&](const LogText& text) { return MatchesLine(text.text, entry.line); }))
                << entry.line << ": no text of the sources";
    }
}

// What the sources of the stand-in device hold, on one line each where a literal goes on.
std::string ReadStandInSources() {
    const fs::path project = PROJECT_FOLDER;
    std::string sources = ReadText(project / "run");
    for (const char* folder : {"host", "scripts"}) {
        for (const auto& entry : fs::recursive_directory_iterator(project / folder)) {
            if (entry.path().extension() == ".cpp" || entry.path().extension() == ".sh") {
                sources += ReadText(entry.path());
            }
        }
    }
    return std::regex_replace(sources, std::regex("\" ?\\\\?\n *\""), "");
}

// The entry is one of the texts, or, where these are put together elsewhere, of pieces of sources.
TEST(ErrorPages, EveryErrorAndWarningOfTheStandInDeviceHasAnEntryAndEveryEntryItsText) {
    const std::vector<Explanation> entries = ReadPages().standIn;
    const std::vector<LogText> texts = ReadStandInTexts(PROJECT_FOLDER);
    for (const LogText& text : texts) {
        EXPECT_TRUE(std::any_of(
                entries.begin(), entries.end(),
                [&](const Explanation& entry) { return MatchesLine(entry.line, text.text); }))
                << text.place << ": " << text.text << ": no entry";
    }
    const std::string sources = ReadStandInSources();
    for (const Explanation& entry : entries) {
        if (std::any_of(texts.begin(), texts.end(),
                        [&](const LogText& text) { return MatchesLine(entry.line, text.text); })) {
            continue;
        }
        const std::string line = std::regex_replace(entry.line, std::regex("…|: "), "\n");
        std::istringstream pieces(line);
        for (std::string piece; std::getline(pieces, piece);) {
            EXPECT_NE(sources.find(piece), std::string::npos) << entry.line << ": " << piece;
        }
    }
}

TEST(ErrorPages, EveryErrorOfTheFaultMatrixIsExplained) {
    const Pages pages = ReadPages();
    std::vector<Explanation> all = pages.tool;
    all.insert(all.end(), pages.standIn.begin(), pages.standIn.end());
    const std::string matrix = ReadText(fs::path(PROJECT_FOLDER) / "docs/faults.md");
    static const std::regex& error = *new std::regex("`E ([^`]*)`");
    const std::sregex_iterator first(matrix.begin(), matrix.end(), error), last;
    EXPECT_NE(first, last);
    for (std::sregex_iterator found = first; found != last; ++found) {
        EXPECT_NE(Explain(all, (*found)[1].str()), nullptr) << (*found)[1];
    }
}

}  // namespace
}  // namespace device_build
