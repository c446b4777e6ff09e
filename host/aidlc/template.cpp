// Fills templates of C++ text.
#include "template.h"

#include <cstdlib>
#include <iostream>
#include <sstream>

namespace aidlc {
namespace {

constexpr char kEach[] = "%each ";
constexpr char kEnd[] = "%end";

bool StartsWith(const std::string& line, const std::string& start) {
    return line.compare(0, start.size(), start) == 0;
}

class Expansion {
  public:
    Expansion(const std::string& text, const Model& model) : m_scopes{&model} {
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) m_lines.push_back(line);
    }

    std::string Run() {
        AddLines(0, m_lines.size());
        return m_result;
    }

  private:
    template <typename Known>
    const auto& Find(const Known& known, const std::string& name) const {
        for (auto scope = m_scopes.rbegin(); scope != m_scopes.rend(); ++scope) {
            const auto found = ((*scope)->*known).find(name);
            if (found != ((*scope)->*known).end()) return found->second;
        }
        std::cerr << "aidlc: internal error: nothing for '" << name << "' in a template\n";
        std::abort();
    }

    // Index of the "%end" that belongs to the "%each" at index first.
    size_t EndOf(size_t first) const {
        size_t at = first;
        for (int depth = 1; depth > 0;) {
            at++;
            if (StartsWith(m_lines[at], kEach)) depth++;
            if (m_lines[at] == kEnd) depth--;
        }
        return at;
    }

    void AddLines(size_t first, size_t last) {
        for (size_t i = first; i < last; i++) {
            const std::string& line = m_lines[i];
            if (!StartsWith(line, kEach)) {
                AddLine(line);
                continue;
            }
            const size_t end = EndOf(i);
            for (const Model& model : Find(&Model::lists, line.substr(sizeof(kEach) - 1))) {
                m_scopes.push_back(&model);
                AddLines(i + 1, end);
                m_scopes.pop_back();
            }
            i = end;
        }
    }

    void AddLine(const std::string& line) {
        std::string result;
        size_t from = 0;
        for (size_t start; (start = line.find('$', from)) != std::string::npos;) {
            const size_t end = line.find('$', start + 1);
            result += line.substr(from, start - from);
            result += Find(&Model::values, line.substr(start + 1, end - start - 1));
            from = end + 1;
        }
        result += line.substr(from);
        if (!result.empty() || line.empty()) m_result += result + "\n";
    }

    std::vector<std::string> m_lines;
    std::vector<const Model*> m_scopes;  // the innermost is the last
    std::string m_result;
};

}  // namespace

std::string Expand(const std::string& text, const Model& model) {
    return Expansion(text, model).Run();
}

}  // namespace aidlc
