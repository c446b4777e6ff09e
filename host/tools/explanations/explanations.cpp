// Reads the explanations of a page and finds the one of a message.

#include "explanations.h"

#include <istream>

namespace explanations {

namespace {

constexpr std::string_view kAnyText = "…";
constexpr std::string_view kStatusSection = "## Exit statuses";
constexpr std::string_view kLineSection = "## Error lines";
constexpr std::string_view kSignalStatus = "128 + n";

bool StartsWith(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
}

std::string_view Trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r";
    const size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// What stands between the first and the last backtick; empty without two.
std::string_view Quoted(std::string_view heading) {
    const size_t first = heading.find('`');
    const size_t last = heading.rfind('`');
    return first == last ? std::string_view() : heading.substr(first + 1, last - first - 1);
}

// Collects entries from one line of the page after the other.
class PageReader {
  public:
    explicit PageReader(bool statuses) : m_statuses(statuses) {}

    void Take(std::string_view line) {
        if (StartsWith(line, "# ") || StartsWith(line, "## ")) {
            m_inSection = m_statuses ? line == kStatusSection : line == kLineSection;
            m_inEntry = false;
        } else if (m_inSection && StartsWith(line, "### ")) {
            if (!m_inEntry || m_textSeen) {
                m_group = m_entries.size();
            }
            m_textSeen = false;
            m_entries.push_back({std::string(Quoted(line)), "", ""});
            m_inEntry = true;
            m_paragraph = nullptr;
        } else if (m_inEntry) {
            TakeText(line);
        }
    }

    std::vector<Explanation> Entries() && { return std::move(m_entries); }

  private:
    void TakeText(std::string_view line) {
        constexpr std::string_view kCause = "Cause:";
        constexpr std::string_view kCure = "Cure:";
        if (StartsWith(line, kCause)) {
            m_paragraph = &Explanation::cause;
            line.remove_prefix(kCause.size());
        } else if (StartsWith(line, kCure)) {
            m_paragraph = &Explanation::cure;
            line.remove_prefix(kCure.size());
        } else if (line.empty()) {
            m_paragraph = nullptr;
        }
        if (m_paragraph == nullptr) {
            return;
        }
        m_textSeen = true;
        for (size_t i = m_group; i < m_entries.size(); ++i) {
            std::string& text = m_entries[i].*m_paragraph;
            text += text.empty() ? "" : " ";
            text += Trimmed(line);
        }
    }

    const bool m_statuses;
    bool m_inSection = false;
    bool m_inEntry = false;
    bool m_textSeen = false;  // of the entries from m_group on, which share it
    size_t m_group = 0;
    std::string Explanation::*m_paragraph = nullptr;  // the one being read; null between them
    std::vector<Explanation> m_entries;
};

std::vector<Explanation> ReadPage(std::istream& page, bool statuses) {
    PageReader reader(statuses);
    for (std::string line; std::getline(page, line);) {
        reader.Take(Trimmed(line));
    }
    return std::move(reader).Entries();
}

size_t LiteralSize(std::string_view line) {
    size_t size = line.size();
    for (size_t at = line.find(kAnyText); at != std::string_view::npos;
         at = line.find(kAnyText, at + kAnyText.size())) {
        size -= kAnyText.size();
    }
    return size;
}

}  // namespace

std::vector<Explanation> ReadExplanations(std::istream& page) {
    return ReadPage(page, false);
}

std::vector<Explanation> ReadExitStatuses(std::istream& page) {
    return ReadPage(page, true);
}

// The first piece stands at the message's start, the last one at its end, each other one at its
// first occurrence after the one before.
bool MatchesLine(std::string_view line, std::string_view message) {
    size_t end = line.find(kAnyText);
    if (end == std::string_view::npos) {
        return line == message;
    }
    if (!StartsWith(message, line.substr(0, end))) {
        return false;
    }
    message.remove_prefix(end);
    line.remove_prefix(end + kAnyText.size());
    while ((end = line.find(kAnyText)) != std::string_view::npos) {
        const size_t found = message.find(line.substr(0, end));
        if (found == std::string_view::npos) {
            return false;
        }
        message.remove_prefix(found + end);
        line.remove_prefix(end + kAnyText.size());
    }
    return message.size() >= line.size() && message.substr(message.size() - line.size()) == line;
}

const Explanation* Explain(const std::vector<Explanation>& explanations,
                           std::string_view logMessage) {
    const Explanation* best = nullptr;
    for (const Explanation& candidate : explanations) {
        if (MatchesLine(candidate.line, logMessage) &&
            (best == nullptr || LiteralSize(candidate.line) > LiteralSize(best->line))) {
            best = &candidate;
        }
    }
    return best;
}

const Explanation* ExplainStatus(const std::vector<Explanation>& statuses, int status) {
    const std::string number = std::to_string(status);
    const Explanation* ofSignals = nullptr;
    for (const Explanation& candidate : statuses) {
        if (candidate.line == number) {
            return &candidate;
        }
        if (candidate.line == kSignalStatus) {
            ofSignals = &candidate;
        }
    }
    return status > 128 ? ofSignals : nullptr;
}

}  // namespace explanations
