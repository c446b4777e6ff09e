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

base::Result<base::Done> Run(const aidlc::Options& options, const std::string& outputFolder) {
    if (outputFolder.empty()) {
        return base::Failure{"--out is missing: name a folder for the generated files", true};
    }
    if (options.files.empty()) return base::Failure{"no .aidl file is named", true};
    if (options.version.number.has_value() == options.version.hash.empty()) {
        return base::Failure{"--version and --hash belong together: give both or none", true};
    }
    const auto generated = aidlc::Compile(options);
    if (!generated.Ok()) return generated.GetFailure();
    for (const aidlc::GeneratedFile& file : generated.Value()) {
        const auto written = WriteFile(outputFolder + "/" + file.path, file.text);
        if (!written.Ok()) return written;
    }
    return base::Done{};
}

}  // namespace

int main(int argc, char** argv) {
    aidlc::Options options;
    std::string outputFolder;
    bool help = false;
    const std::vector<base::Option> table = {
            base::Text("--out", "DIR", "folder for the generated files: DIR/include and DIR/src",
                       &outputFolder),
            base::Texts("-I", "ROOT",
                        "folder in which the folders of a package start; may be repeated",
                        &options.roots),
            base::Number("--version", "N", "version of the interfaces", 1,
                         std::numeric_limits<int32_t>::max(), &options.version.number),
            base::Text("--hash", "H", "hash of that version; needed with --version",
                       &options.version.hash),
            base::Switch("--help", "print this text", &help)};
    const std::string usage =
            "usage: aidlc --out DIR [-I ROOT]... [--version N --hash H] FILE.aidl...\n" +
            base::OptionHelp(table);
    const auto files = base::ReadOptions(table, base::WordsOf(argc, argv), base::Order::kAnywhere);
    if (files.Ok()) options.files = files.Value();
    if (files.Ok() && help) {
        std::cout << usage;
        return 0;
    }
    const base::Result<base::Done> ran =
            files.Ok() ? Run(options, outputFolder) : files.GetFailure();
    if (ran.Ok()) return 0;
    const bool isMisuse = ran.GetFailure().misuse;
    std::cerr << (isMisuse ? "aidlc: " : "") << ran.Error() << "\n" << (isMisuse ? usage : "");
    return isMisuse ? 2 : 1;
}
