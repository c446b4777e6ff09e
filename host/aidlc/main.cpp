// aidlc: turns .aidl files into C++ for the binder NDK. Ends with 0, 1 (faulty .aidl, or a file
// that cannot be written) or 2 (faulty command line).
#include <base/options.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>

#include "compile.h"

namespace {

struct CommandLine {
    std::string outputFolder;
    std::optional<uint64_t> version;
    aidlc::Options options;
    bool help = false;
};

std::vector<base::Option> OptionTable(CommandLine* line) {
    return {base::Text("--out", "DIR", "folder for the generated files: DIR/include and DIR/src",
                       &line->outputFolder),
            base::Texts("-I", "ROOT",
                        "folder in which the folders of a package start; may be repeated",
                        &line->options.roots),
            base::Number("--version", "N", "version of the interfaces", 1,
                         std::numeric_limits<int32_t>::max(), &line->version),
            base::Text("--hash", "H", "hash of that version; needed with --version",
                       &line->options.version.hash),
            base::Switch("--help", "print this text", &line->help)};
}

base::Result<base::Done> WriteFile(const std::string& path, const std::string& text) {
    std::error_code code;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), code);
    if (code) return base::Failure{"cannot make the folder of " + path + ": " + code.message()};
    std::ofstream stream(path, std::ios::binary | std::ios::trunc);
    stream << text;
    stream.close();
    if (stream.fail()) {
        return base::Failure{"cannot write " + path + ": " + std::strerror(errno)};
    }
    return base::Done{};
}

base::Result<base::Done> Run(const std::vector<base::Option>& table,
                             const std::vector<std::string>& words, CommandLine* line) {
    auto files = base::ReadOptions(table, words, base::Order::kAnywhere);
    if (!files.Ok()) return files.GetFailure();
    if (line->help) return base::Done{};
    line->options.files = std::move(files).Value();
    line->options.version.number = line->version.value_or(0);
    if (line->outputFolder.empty()) {
        return base::Failure{"--out is missing: name a folder for the generated files", true};
    }
    if (line->options.files.empty()) return base::Failure{"no .aidl file is named", true};
    if (line->version.has_value() == line->options.version.hash.empty()) {
        return base::Failure{"--version and --hash belong together: give both or none", true};
    }
    const auto generated = aidlc::Compile(line->options);
    if (!generated.Ok()) return generated.GetFailure();
    for (const aidlc::GeneratedFile& file : generated.Value()) {
        const auto written = WriteFile(line->outputFolder + "/" + file.path, file.text);
        if (!written.Ok()) return written;
    }
    return base::Done{};
}

}  // namespace

int main(int argc, char** argv) {
    CommandLine line;
    const std::vector<base::Option> table = OptionTable(&line);
    const std::string help =
            "usage: aidlc --out DIR [-I ROOT]... [--version N --hash H] FILE.aidl...\n" +
            base::OptionHelp(table);
    const base::Result<base::Done> ran = Run(table, base::WordsOf(argc, argv), &line);
    if (ran.Ok()) {
        if (line.help) std::cout << help;
        return 0;
    }
    const bool isMisuse = ran.GetFailure().misuse;
    std::cerr << (isMisuse ? "aidlc: " : "") << ran.Error() << "\n" << (isMisuse ? help : "");
    return isMisuse ? 2 : 1;
}
