// Finds, reads and keeps the .aidl files of one run.
#include "source_tree.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "parser.h"

namespace aidlc {
namespace {

base::Result<std::string> ReadFile(const std::string& path) {
    std::error_code code;
    if (!std::filesystem::is_regular_file(path, code)) {
        return base::Failure{"cannot read " + path + ": " +
                             (code ? code.message() : "not a regular file")};
    }
    std::ifstream stream(path, std::ios::binary);
    const std::string text(std::istreambuf_iterator<char>(stream), {});
    if (!stream.is_open() || stream.bad()) {
        return base::Failure{"cannot read " + path + ": " + std::strerror(errno)};
    }
    return text;
}

std::string RelativePath(const std::string& fullName) {
    std::string path = fullName;
    std::replace(path.begin(), path.end(), '.', '/');
    return path + ".aidl";
}

}  // namespace

base::Result<Declaration*> SourceTree::Load(const std::string& path) {
    const base::Result<std::string> text = ReadFile(path);
    if (!text.Ok()) return text.GetFailure();
    base::Result<std::unique_ptr<Declaration>> parsed = Parse(text.Value(), path);
    if (!parsed.Ok()) return parsed.GetFailure();
    Declaration* const declaration = parsed.Value().get();
    const std::string name = declaration->FullName();
    const auto failure = [&](const std::string& message) {
        return base::Failure{Located(path, declaration->position, "type " + name + message)};
    };
    const std::string place = "/" + RelativePath(name);
    const std::string whole = "/" + path;
    if (whole.size() < place.size() || whole.substr(whole.size() - place.size()) != place) {
        return failure(" belongs in a file " + RelativePath(name));
    }
    base::Result<Declaration*>& known = m_found.emplace(name, nullptr).first->second;
    if (known.Ok() && known.Value()) {
        return failure(" was already read from " + known.Value()->file);
    }
    known = declaration;
    m_declarations.push_back(std::move(parsed).Value());
    return declaration;
}

base::Result<Declaration*> SourceTree::Find(const std::string& fullName) {
    const auto known = m_found.find(fullName);
    if (known != m_found.end()) return known->second;
    for (const std::string& root : m_roots) {
        const std::string path = root + "/" + RelativePath(fullName);
        std::error_code ignored;
        if (!std::filesystem::exists(path, ignored)) continue;
        return m_found.emplace(fullName, Load(path)).first->second;
    }
    return m_found.emplace(fullName, nullptr).first->second;
}

}  // namespace aidlc
