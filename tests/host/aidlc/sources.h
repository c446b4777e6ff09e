// A folder of .aidl files written by a test, and what the compiler says about it.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/aidlc/compile.h"
#include "host/aidlc/files.h"
#include "tests/support/temporary_folder.h"

namespace aidlc {

class Sources {
  public:
    const std::string& Root() const { return mRoot; }

    /** Writes a/b/Name.aidl with its package line already there, so that text starts in line 2. */
    void Add(const std::string& path, const std::string& text) {
        std::string package = path.substr(0, path.rfind('/'));
        for (char& c : package) c = c == '/' ? '.' : c;
        AddRaw(path, "package " + package + ";\n" + text);
    }

    void AddRaw(const std::string& path, const std::string& text) {
        std::string error;
        ASSERT_TRUE(WriteFile(mRoot + "/" + path, text, &error)) << error;
    }

    std::vector<std::string> Messages(const std::string& path) { return MessagesOfAll({path}); }

    /** Compiles some of the files; the root is the only -I folder. Messages lose its name. */
    std::vector<std::string> MessagesOfAll(const std::vector<std::string>& paths) {
        Options options;
        options.roots = {mRoot};
        for (const std::string& path : paths) options.files.push_back(mRoot + "/" + path);
        Diagnostics diagnostics;
        mFiles = Compile(options, &diagnostics);
        std::vector<std::string> messages;
        for (std::string message : diagnostics.Messages()) {
            for (size_t at; (at = message.find(mRoot + "/")) != std::string::npos;) {
                message.erase(at, mRoot.size() + 1);
            }
            messages.push_back(message);
        }
        return messages;
    }

    /** Text of a file that the last Messages() made; empty if there is none. */
    std::string Generated(const std::string& path) const {
        for (const GeneratedFile& file : mFiles) {
            if (file.path == path) return file.text;
        }
        return "";
    }

    bool MadeFiles() const { return !mFiles.empty(); }

  private:
    const TemporaryFolder mFolder{"aidlc"};
    const std::string mRoot = mFolder.path();
    std::vector<GeneratedFile> mFiles;
};

}  // namespace aidlc
