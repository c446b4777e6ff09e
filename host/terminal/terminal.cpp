// Colour and progress on standard error.

#include "terminal/terminal.h"

#include <stdlib.h>
#include <string.h>
#include <unistd.h>

namespace terminal {
namespace {

constexpr size_t kColumns = 78;  // a line that wraps could not be taken away

bool IsTerminal() {
    const char* const kind = getenv("TERM");
    return isatty(STDERR_FILENO) && kind && strcmp(kind, "dumb") != 0;
}

bool ShowsColours() {
    const char* const none = getenv("NO_COLOR");
    return IsTerminal() && (!none || !*none);
}

void ReplaceLine(const std::string& text) {
    const std::string line = BlankedLine() + text.substr(0, kColumns);
    if (write(STDERR_FILENO, line.data(), line.size()) < 0) return;
}

}  // namespace

std::string Red(const std::string& text) {
    return ShowsColours() ? "\033[31m" + text + "\033[0m" : text;
}

std::string Yellow(const std::string& text) {
    return ShowsColours() ? "\033[33m" + text + "\033[0m" : text;
}

// Blanks over the old line instead of an escape code: NO_COLOR leaves no codes at all.
std::string BlankedLine() {
    return IsTerminal() ? "\r" + std::string(kColumns, ' ') + "\r" : "";
}

Progress::~Progress() {
    if (m_shown) ReplaceLine("");
}

void Progress::Show(const std::string& text) {
    if (!IsTerminal()) return;
    m_shown = true;
    ReplaceLine(text);
}

}  // namespace terminal
