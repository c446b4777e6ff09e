// One run of the compiler, without its process: read, check, emit.
#include "compile.h"

#include "checker.h"
#include "source_tree.h"

namespace aidlc {

std::vector<GeneratedFile> Compile(const Options& options, Diagnostics* diagnostics) {
    SourceTree tree(options.roots, diagnostics);
    std::vector<const Declaration*> named;
    for (const std::string& file : options.files) {
        if (const Declaration* declaration = tree.LoadFile(file)) {
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
    for (const Declaration* declaration : named) {
        for (GeneratedFile& file : Emit(*declaration, {options.version, options.hash})) {
            files.push_back(std::move(file));
        }
    }
    return files;
}

}  // namespace aidlc
