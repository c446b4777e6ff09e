// Finds, reads and keeps the .aidl files of one run.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "ast.h"
#include "diagnostics.h"

namespace aidlc {

/** Owns every parsed document; declarations keep their addresses for the life of the tree. */
class SourceTree {
  public:
    /** roots: folders that a package's folders start in, searched in order. */
    SourceTree(std::vector<std::string> roots, Diagnostics* diagnostics)
        : mRoots(std::move(roots)), mDiagnostics(diagnostics) {}

    /** Reads a file named on the command line. Null after reporting an error. */
    Declaration* LoadFile(const std::string& path);

    /** The declaration of a type by its full name; null, without a report, if no root has it. */
    Declaration* Find(const std::string& canonicalName);

    /** What a type name means inside a document; null, without a report, if it means nothing. */
    Declaration* Lookup(const Document& document, const std::string& name);

    /** Whether a complaint about the type was made already, so that its uses need none. */
    bool IsReported(const Document& document, const std::string& name) const;
    void MarkReported(const std::string& canonicalName) { mReported.insert(canonicalName); }

    /** All documents read so far, in order of reading; grows while names are looked up. */
    const std::vector<std::unique_ptr<Document>>& Documents() const { return mDocuments; }

    /** The roots in one line, for messages. */
    std::string RootList() const;

  private:
    Declaration* Read(const std::string& path, const std::string& text);
    std::string CanonicalName(const Document& document, const std::string& name) const;

    std::vector<std::string> mRoots;
    Diagnostics* mDiagnostics;
    std::vector<std::unique_ptr<Document>> mDocuments;
    std::map<std::string, Declaration*> mByName;  // null: looked for in vain
    std::set<std::string> mReported;
};

}  // namespace aidlc
