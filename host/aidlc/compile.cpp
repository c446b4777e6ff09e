// One run of the compiler, without its process: read, check, emit.
#include "compile.h"

#include <set>

#include "checker.h"
#include "source_tree.h"

namespace aidlc {

base::Result<std::vector<GeneratedFile>> Compile(const Options& options) {
    SourceTree tree(options.roots);
    std::vector<const Declaration*> named;
    std::set<std::string> seen;
    for (const std::string& file : options.files) {
        if (!seen.insert(file).second) continue;
        const base::Result<Declaration*> loaded = tree.Load(file);
        if (!loaded.Ok()) return loaded.GetFailure();
        named.push_back(loaded.Value());
    }
    const base::Result<base::Done> checked = Check(&tree);
    if (!checked.Ok()) return checked.GetFailure();
    std::vector<GeneratedFile> files;
    for (const Declaration* declaration : named) {
        if (declaration->kind == Declaration::Kind::kInterface && !options.version.number) {
            return base::Failure{Located(declaration->file, declaration->position,
                                         "an interface needs --version and --hash")};
        }
        for (GeneratedFile& file : Emit(*declaration, options.version)) {
            files.push_back(std::move(file));
        }
    }
    return files;
}

}  // namespace aidlc
