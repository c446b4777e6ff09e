// Finds, reads and keeps the .aidl files of one run.
#pragma once

#include <base/result.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "ast.h"

namespace aidlc {

// Owns every declaration; they keep their addresses for the life of the tree.
class SourceTree {
  public:
    // roots: folders that a package's folders start in, searched in order.
    explicit SourceTree(std::vector<std::string> roots) : m_roots(std::move(roots)) {}

    // Reads a file named on the command line.
    base::Result<Declaration*> Load(const std::string& path);

    // The declaration of a type by its full name; null if no root has it. Fails if its file is
    // faulty.
    base::Result<Declaration*> Find(const std::string& fullName);

    // All that were read so far, in order of reading; grows while names are looked up.
    const std::vector<std::unique_ptr<Declaration>>& Declarations() const { return m_declarations; }

  private:
    std::vector<std::string> m_roots;
    std::vector<std::unique_ptr<Declaration>> m_declarations;
    std::map<std::string, base::Result<Declaration*>> m_found;  // by full name
};

}  // namespace aidlc
