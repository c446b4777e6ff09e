// aidlc: turns .aidl files into C++ for the binder NDK. Ends with 0, 1 (faulty .aidl, or a file
// that cannot be written) or 2 (faulty command line).
#include <iostream>

#include "compile.h"
#include "files.h"

int main(int argc, char** argv) {
    aidlc::Options options;
    std::string error;
    if (!aidlc::ParseOptions({argv + 1, argv + argc}, &options, &error)) {
        std::cerr << "aidlc: " << error << "\n" << aidlc::kUsage;
        return 2;
    }
    if (options.help) {
        std::cout << aidlc::kUsage;
        return 0;
    }
    aidlc::Diagnostics diagnostics;
    const std::vector<aidlc::GeneratedFile> files = aidlc::Compile(options, &diagnostics);
    diagnostics.Print(std::cerr);
    if (diagnostics.HasErrors()) {
        return 1;
    }
    for (const aidlc::GeneratedFile& file : files) {
        if (!aidlc::WriteFile(options.outputFolder + "/" + file.path, file.text, &error)) {
            std::cerr << "aidlc: " << error << "\n";
            return 1;
        }
    }
    return 0;
}
