// What a person at a terminal sees on standard error: colour, and a line of progress that is gone
// afterwards. Where standard error is something else, or TERM is "dumb", neither appears; with a
// NO_COLOR that is not empty, no colour.
#pragma once

#include <string>

namespace terminal {

// The text in red where colours are shown, else as it is.
std::string Red(const std::string& text);
// Likewise in yellow.
std::string Yellow(const std::string& text);

// What takes a line of progress away, which another process may have left; empty where none shows.
std::string BlankedLine();

// One line that Show() replaces and the destructor takes away. Used by one thread at a time.
class Progress {
  public:
    Progress() = default;
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Show(const std::string& text);

  private:
    bool m_shown = false;
};

}  // namespace terminal
