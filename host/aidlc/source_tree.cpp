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
    const auto known = mByName.find(canonicalName);
    if (known != mByName.end()) {
        return known->second;
    }
    mByName[canonicalName] = nullptr;
    for (const std::string& root : mRoots) {
        const std::string path = root + "/" + RelativePath(canonicalName);
        std::string text;
        std::string ignored;
        if (ReadFile(path, &text, &ignored)) {
            Declaration* const found = Read(path, text);
            if (found == nullptr) {
                MarkReported(canonicalName);
            }
            return found;
        }
    }
    return nullptr;
}

std::string SourceTree::CanonicalName(const Document& document, const std::string& name) const {
    if (name.find('.') != std::string::npos) {
        return name;
    }
    for (const Import& import : document.imports) {
        if (name != document.declaration.name &&
            EndsWithPath(RelativePath(import.name), name + ".aidl")) {
            return import.name;
        }
    }
    return document.package + "." + name;
}

Declaration* SourceTree::Lookup(const Document& document, const std::string& name) {
    return Find(CanonicalName(document, name));
}

bool SourceTree::IsReported(const Document& document, const std::string& name) const {
    return mReported.count(CanonicalName(document, name)) != 0;
}

std::string SourceTree::RootList() const {
    std::string list;
    for (const std::string& root : mRoots) {
        list += (list.empty() ? "" : ", ") + root;
    }
    return list.empty() ? "no -I folder given" : list;
}

}  // namespace aidlc
