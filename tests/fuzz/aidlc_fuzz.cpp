// The AIDL compiler's input: one file of arbitrary text, parsed, checked and emitted.
#include <filesystem>

#include "fuzz_input.h"
#include "host/aidlc/compile.h"
#include "host/aidlc/files.h"
#include "host/aidlc/parser.h"

namespace {

std::string makeFolder() {
    char folder[] = "/tmp/aidlc_fuzz_XXXXXX";
    require(mkdtemp(folder) != nullptr);
    return folder;
}

// Where the text itself says that it belongs, below `root`; empty if it cannot be parsed.
std::string ownPath(const std::string& text, const std::string& root) {
    aidlc::Diagnostics diagnostics;
    const auto document = aidlc::Parse(text, "input", &diagnostics);
    require((document == nullptr) == diagnostics.HasErrors());
    if (document == nullptr) return "";
    std::string path = document->declaration.CanonicalName();
    if (path.size() > 200) return "";
    std::replace(path.begin(), path.end(), '.', '/');
    return root + "/" + path + ".aidl";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    static const std::string* const root = new std::string(makeFolder());
    const std::string path = ownPath(text, *root);
    std::string error;
    if (!path.empty() && aidlc::WriteFile(path, text, &error)) {
        aidlc::Options options;
        options.roots = {*root, AIDL_ROOT};
        options.files = {path};
        aidlc::Diagnostics diagnostics;
        const auto files = aidlc::Compile(options, &diagnostics);
        require(files.empty() == diagnostics.HasErrors());
    }
    std::error_code ignored;
    std::filesystem::remove_all(*root, ignored);
    return 0;
}
