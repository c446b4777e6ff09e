// One run of the compiler, without its process: read, check, emit.
#include "compile.h"

#include <algorithm>
#include <map>

#include "checker.h"
#include "source_tree.h"

namespace aidlc {

std::vector<GeneratedFile> Compile(const Options& options, Diagnostics* diagnostics) {
    SourceTree tree(options.roots, diagnostics);
    std::vector<const Declaration*> named;
    for (const std::string& file : options.files) {
        const Declaration* const declaration = tree.LoadFile(file);
        const bool isNew = std::find(named.begin(), named.end(), declaration) == named.end();
        if (declaration != nullptr && isNew) {
            named.push_back(declaration);
        }
    }
    if (!diagnostics->HasErrors()) {
        Checker(&tree, diagnostics).CheckAll();
    }
    std::vector<GeneratedFile> files;
    if (diagnostics->HasErrors()) {
        return files;
    }
    std::map<std::string, const Declaration*> owners;  // by path
    for (const Declaration* declaration : named) {
        for (GeneratedFile& file : Emit(*declaration, {options.version, options.hash})) {
            const auto [owner, isNew] = owners.emplace(file.path, declaration);
            if (!isNew) {
                diagnostics->Report(declaration->position,
                                    owner->second->CanonicalName() + " and " +
                                            declaration->CanonicalName() + " both make " +
                                            file.path + ": rename one of them");
                return {};
            }
            files.push_back(std::move(file));
        }
    }
    return files;
}

}  // namespace aidlc
