// Finds, reads and keeps the .aidl files of one run.
#include "source_tree.h"

#include <algorithm>

#include "files.h"
#include "parser.h"

namespace aidlc {
namespace {

std::string RelativePath(const std::string& canonicalName) {
    std::string path = canonicalName;
    std::replace(path.begin(), path.end(), '.', '/');
    return path + ".aidl";
}

bool EndsWithPath(const std::string& path, const std::string& tail) {
    if (path == tail) {
        return true;
    }
    const size_t length = tail.size() + 1;
    return path.size() >= length && path.compare(path.size() - length, length, "/" + tail) == 0;
}

}  // namespace

Declaration* SourceTree::LoadFile(const std::string& path) {
    std::string text;
    std::string error;
    if (!ReadFile(path, &text, &error)) {
        mDiagnostics->Report({&path, 1, 1}, error);
        return nullptr;
    }
    for (const auto& document : mDocuments) {
        if (document->file == path) {
            return &document->declaration;
        }
    }
    return Read(path, text);
}

Declaration* SourceTree::Read(const std::string& path, const std::string& text) {
    std::unique_ptr<Document> document = Parse(text, path, mDiagnostics);
    if (document == nullptr) {
        return nullptr;
    }
    Declaration& declaration = document->declaration;
    const std::string expected = RelativePath(declaration.CanonicalName());
    if (!EndsWithPath(path, expected)) {
        mDiagnostics->Report(declaration.position, "type " + declaration.CanonicalName() +
                                                           " belongs in a file " + expected);
        return nullptr;
    }
    Declaration*& known = mByName[declaration.CanonicalName()];
    if (known != nullptr) {
        mDiagnostics->Report(declaration.position, "type " + declaration.CanonicalName() +
                                                           " was already read from " +
                                                           known->document->file);
        return nullptr;
    }
    known = &declaration;
    mDocuments.push_back(std::move(document));
    return known;
}

Declaration* SourceTree::Find(const std::string& canonicalName) {
    const auto found = mByName.find(canonicalName);
    if (found != mByName.end()) {
        return found->second;
    }
    mByName[canonicalName] = nullptr;
    for (const std::string& root : mRoots) {
        const std::string path = root + "/" + RelativePath(canonicalName);
        std::string text;
        std::string ignored;
        if (ReadFile(path, &text, &ignored)) {
            return Read(path, text);
        }
    }
    return nullptr;
}

Declaration* SourceTree::Lookup(const Document& document, const std::string& name) {
    if (name.find('.') != std::string::npos) {
        return Find(name);
    }
    if (document.declaration.name == name) {
        return Find(document.declaration.CanonicalName());
    }
    for (const Import& import : document.imports) {
        if (EndsWithPath(RelativePath(import.name), name + ".aidl")) {
            return Find(import.name);
        }
    }
    return Find(document.package + "." + name);
}

std::string SourceTree::RootList() const {
    std::string list;
    for (const std::string& root : mRoots) {
        list += (list.empty() ? "" : ", ") + root;
    }
    return list.empty() ? "no -I folder given" : list;
}

}  // namespace aidlc
