// Runs headless Chromium on a page.

#include "browser.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/end_to_end/subprocess.h"
#include "tests/support/temporary_folder.h"

namespace runreport_page {

namespace {

// An address of a file: what has a meaning in an address is written as %XX.
std::string fileAddress(const std::string& path) {
    std::string address = "file://";
    for (const char letter : path) {
        if (letter == ' ' || letter == '#' || letter == '%' || letter == '?') {
            char code[4];
            snprintf(code, sizeof code, "%%%02X", letter);
            address += code;
        } else {
            address += letter;
        }
    }
    return address;
}

std::string linesWith(const std::string& text, const std::string& word) {
    std::istringstream lines(text);
    std::string found;
    for (std::string line; std::getline(lines, line);) {
        if (line.find(word) != std::string::npos) found += line + "\n";
    }
    return found;
}

}  // namespace

Rendered render(const std::string& path, const std::string& fragment) {
    const TemporaryFolder profile("browser");
    const end_to_end::Finished finished = end_to_end::runProgram(
            {"chromium", "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic",
             "--no-first-run", "--disable-background-networking", "--disable-component-update",
             "--disable-sync", "--disable-dev-shm-usage", "--enable-logging=stderr",
             "--user-data-dir=" + profile.path(), "--dump-dom", fileAddress(path) + "#" + fragment},
            {{"HOME", profile.path()}});
    EXPECT_EQ(finished.status, 0) << finished.err;
    const size_t start = finished.out.find("<main");
    const size_t end = finished.out.find("</main>");
    if (start == std::string::npos || end == std::string::npos) {
        ADD_FAILURE() << "no page: " << finished.out.substr(0, 1000) << finished.err;
        return {};
    }
    return {finished.out.substr(start, end - start), linesWith(finished.err, "CONSOLE")};
}

std::vector<std::string> textsBetween(const std::string& markup, const std::string& start,
                                      const std::string& end) {
    std::vector<std::string> texts;
    size_t at = markup.find(start);
    while (at != std::string::npos) {
        const size_t from = at + start.size();
        const size_t to = markup.find(end, from);
        if (to == std::string::npos) break;
        std::string text;
        bool inTag = false;
        for (const char letter : markup.substr(from, to - from)) {
            if (letter == '<') inTag = true;
            if (!inTag) text += letter;
            if (letter == '>') inTag = false;
        }
        texts.push_back(text);
        at = markup.find(start, to);
    }
    return texts;
}

}  // namespace runreport_page
