// Colour and progress on standard error.

#include "terminal/terminal.h"

#include <stdlib.h>
#include <string.h>
#include <unistd.h>

namespace terminal {
namespace {

constexpr size_t kColumns = 78;  // a line that wraps could not be taken away

bool isTerminal() {
    const char* const kind = getenv("TERM");
    return isatty(STDERR_FILENO) && kind && strcmp(kind, "dumb") != 0;
}

bool showsColours() {
    const char* const none = getenv("NO_COLOR");
    return isTerminal() && (!none || !*none);
}

void replaceLine(const std::string& text) {
    const std::string line = blankedLine() + text.substr(0, kColumns);
    if (write(STDERR_FILENO, line.data(), line.size()) < 0) return;
}

}  // namespace

std::string red(const std::string& text) {
    return showsColours() ? "\033[31m" + text + "\033[0m" : text;
}

std::string yellow(const std::string& text) {
    return showsColours() ? "\033[33m" + text + "\033[0m" : text;
}

// Blanks over the old line instead of an escape code: NO_COLOR leaves no codes at all.
std::string blankedLine() {
    return isTerminal() ? "\r" + std::string(kColumns, ' ') + "\r" : "";
}

Progress::~Progress() {
    if (m_shown) replaceLine("");
}

void Progress::show(const std::string& text) {
    if (!isTerminal()) return;
    m_shown = true;
    replaceLine(text);
}

}  // namespace terminal
