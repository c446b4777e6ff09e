// A folder of .aidl files written by a test, and what the compiler makes of it.
#pragma once

#include <filesystem>
#include <fstream>
#include <map>
#include <string>

#include "host/aidlc/compile.h"
#include "tests/support/temporary_folder.h"

namespace aidlc {

class Sources {
  public:
    std::string Path(const std::string& name) const { return m_folder.Path(name); }

    // Writes a/b/Name.aidl; the lines for its package and annotations are already there, so that
    // text starts in line 3. An enum has values of 32 bits.
    void Add(const std::string& name, const std::string& text) {
        std::string package = name.substr(0, name.rfind('/'));
        for (char& c : package) c = c == '/' ? '.' : c;
        std::filesystem::create_directories(Path(name.substr(0, name.rfind('/'))));
        const std::string backing = text.rfind("enum", 0) == 0 ? " @Backing(type=\"int\")" : "";
        std::ofstream(Path(name)) << "package " << package << ";\n@VintfStability" << backing
                                  << "\n"
                                  << text;
    }

    // What is wrong with a file, empty if nothing is. The folder is the only root; messages lose
    // its name.
    std::string Compile(const std::string& name) {
        const auto made = aidlc::Compile({{m_folder.Path()}, {3, "0123abcd"}, {Path(name)}});
        generated.clear();
        if (made.Ok()) {
            for (const GeneratedFile& file : made.Value()) generated[file.path] = file.text;
        }
        std::string error = made.Ok() ? "" : made.Error();
        for (size_t at; (at = error.find(Path(""))) != std::string::npos;) {
            error.erase(at, Path("").size());
        }
        return error;
    }

    std::map<std::string, std::string> generated;  // by path; of the last Compile()

  private:
    const TemporaryFolder m_folder{"aidlc"};
};

}  // namespace aidlc
