// The tool's module file against the sources that a device builds from it.

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <set>

namespace {

namespace fs = std::filesystem;
using testing::ContainerEq;

// The texts in the list of this name, one a line, as the platform's formatter leaves them.
std::set<std::string> ListOf(const fs::path& file, const std::string& name) {
    std::set<std::string> texts;
    std::ifstream lines(file);
    std::string line;
    while (std::getline(lines, line) && line != "    " + name + ": [") {
    }
    while (std::getline(lines, line) && line != "    ],") {
        const size_t begin = line.find('"') + 1;
        texts.insert(line.substr(begin, line.rfind('"') - begin));
    }
    return texts;
}

TEST(DeviceBuild, TheToolIsBuiltFromAllItsSources) {
    const fs::path project = PROJECT_FOLDER;
    std::set<std::string> patterns;
    for (const char* folder : {"client", "driver", "gralloc"}) {
        for (const auto& entry : fs::recursive_directory_iterator(project / folder)) {
            const fs::path path = entry.path().lexically_relative(project);
            if (path.extension() == ".cpp") patterns.insert(path.parent_path() / "*.cpp");
        }
    }
    EXPECT_THAT(ListOf(project / "Android.bp", "srcs"), ContainerEq(patterns));
}

}  // namespace
