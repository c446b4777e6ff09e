// The AIDL compiler's input: one file of arbitrary text, parsed, checked and emitted.
#include <filesystem>
#include <fstream>

#include "fuzz_input.h"
#include "host/aidlc/compile.h"
#include "host/aidlc/parser.h"

namespace {

// Where the text itself says that it belongs, below `root`; empty if it cannot be parsed.
std::string OwnPath(const std::string& text, const std::string& root) {
    const auto declaration = aidlc::Parse(text, "input");
    if (!declaration.Ok()) return "";
    std::string path = declaration.Value()->FullName();
    if (path.size() > 200) return "";
    std::replace(path.begin(), path.end(), '.', '/');
    return root + "/" + path + ".aidl";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    static char root[] = "/tmp/aidlc_fuzz_XXXXXX";
    static const bool made = mkdtemp(root) != nullptr;
    Require(made);
    const std::string path = OwnPath(text, root);
    std::error_code ignored;
    if (!path.empty()) {
        std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ignored);
        std::ofstream(path) << text;
        const auto files = aidlc::Compile({{root, AIDL_ROOT}, {1, "1"}, {path}});
        Require(files.Ok() ? !files.Value().empty() : !files.Error().empty());
    }
    std::filesystem::remove_all(root, ignored);
    return 0;
}
