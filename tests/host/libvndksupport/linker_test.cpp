// Opening of HAL libraries by name.
#include <android/log.h>
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <vndksupport/linker.h>

#include <cstdlib>
#include <fstream>
#include <vector>

#include "tests/support/temporary_folder.h"

namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

const std::string kFolders = SPHAL_FOLDERS;

std::vector<std::string> gLines;

void KeepLine(const __android_logger_data* data, const char* message) {
    gLines.push_back(std::string(data->tag) + ": " + message);
}

class LinkerTest : public ::testing::Test {
  protected:
    LinkerTest() {
        gLines.clear();
        __android_log_set_logger(KeepLine);
    }
    ~LinkerTest() override { __android_log_set_logger(__android_log_stderr_logger); }

    // What Answer() of answer.so in one of these folders says; 0 if the library does not open.
    int Ask(const std::string& folders) {
        setenv("STANDIN_HAL_PATH", folders.c_str(), 1);
        void* library = android_load_sphal_library("answer.so", RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr) return 0;
        const auto answer = reinterpret_cast<int (*)()>(dlsym(library, "Answer"));
        const int result = answer != nullptr ? answer() : -1;
        EXPECT_EQ(dlclose(library), 0);
        return result;
    }
};

TEST_F(LinkerTest, TheFirstFolderThatHasTheLibraryWins) {
    EXPECT_EQ(Ask(kFolders + "/1:" + kFolders + "/2"), 1);
    EXPECT_EQ(Ask(":" + kFolders + "/missing::" + kFolders + "/2:"), 2);
    EXPECT_THAT(gLines, ElementsAre());
}

TEST_F(LinkerTest, WithoutASearchPathTheDevicesFolderIsUsed) {
    unsetenv("STANDIN_HAL_PATH");
    EXPECT_EQ(android_load_sphal_library("missing.so", RTLD_NOW), nullptr);
    EXPECT_EQ(Ask(":"), 0);
    EXPECT_THAT(gLines,
                ElementsAre(AllOf(StartsWith("vndksupport: Could not load missing.so from sphal "
                                             "namespace: /vendor/lib64/hw/missing.so"),
                                  EndsWith(".")),
                            HasSubstr("names no folder")));
}

TEST_F(LinkerTest, ADamagedLibraryIsNamedAndNotPassedOver) {
    const TemporaryFolder folder("damaged_sphal");
    std::ofstream(folder.Path("answer.so")) << "not a library";
    EXPECT_EQ(Ask(kFolders + "/missing:" + folder.Path() + ":" + kFolders + "/2"), 0);
    EXPECT_THAT(gLines, ElementsAre(HasSubstr(folder.Path("answer.so"))));
}

TEST_F(LinkerTest, OnlyPlainFileNamesAreOpened) {
    setenv("STANDIN_HAL_PATH", (kFolders + "/1").c_str(), 1);
    for (const char* name : {"../1/answer.so", "", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(android_load_sphal_library(name, RTLD_NOW), nullptr);
    }
    EXPECT_EQ(gLines.size(), 3u);
}

}  // namespace
