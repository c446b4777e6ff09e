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

std::vector<std::string>& logLines() {
    static auto* const lines = new std::vector<std::string>;
    return *lines;
}

void keepLine(const __android_logger_data* data, const char* message) {
    logLines().push_back(std::string(data->tag) + ": " + message);
}

class LinkerTest : public ::testing::Test {
  protected:
    LinkerTest() {
        logLines().clear();
        __android_log_set_logger(keepLine);
    }
    ~LinkerTest() override { __android_log_set_logger(__android_log_stderr_logger); }

    void search(const std::string& folders) { setenv("STANDIN_HAL_PATH", folders.c_str(), 1); }

    // What answer() of answer.so says; 0 if the library does not open.
    int openAndAsk() {
        void* library = android_load_sphal_library("answer.so", RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr) return 0;
        const auto answer = reinterpret_cast<int (*)()>(dlsym(library, "answer"));
        const int result = answer != nullptr ? answer() : -1;
        EXPECT_EQ(android_unload_sphal_library(library), 0);
        return result;
    }
};

TEST_F(LinkerTest, TheFirstFolderThatHasTheLibraryWins) {
    search(kFolders + "/1:" + kFolders + "/2");
    EXPECT_EQ(openAndAsk(), 1);
    search(kFolders + "/2:" + kFolders + "/1");
    EXPECT_EQ(openAndAsk(), 2);
    search(":" + kFolders + "/missing::" + kFolders + "/2:");
    EXPECT_EQ(openAndAsk(), 2);
    EXPECT_THAT(logLines(), ElementsAre());
}

TEST_F(LinkerTest, AMissingLibraryIsNullWithOneLogLine) {
    search(kFolders + "/1");
    EXPECT_EQ(android_load_sphal_library("missing.so", RTLD_NOW), nullptr);
    EXPECT_THAT(logLines(),
                ElementsAre(AllOf(
                        StartsWith("vndksupport: Could not load missing.so from sphal namespace: "),
                        HasSubstr(kFolders + "/1/missing.so"), EndsWith("."))));
}

TEST_F(LinkerTest, WithoutASearchPathTheDevicesFolderIsUsed) {
    unsetenv("STANDIN_HAL_PATH");
    EXPECT_EQ(android_load_sphal_library("missing.so", RTLD_NOW), nullptr);
    search(":");
    EXPECT_EQ(android_load_sphal_library("missing.so", RTLD_NOW), nullptr);
    EXPECT_THAT(logLines(), ElementsAre(HasSubstr("/vendor/lib64/hw/missing.so"),
                                        HasSubstr("names no folder")));
}

TEST_F(LinkerTest, ADamagedLibraryIsNamedAndNotPassedOver) {
    const TemporaryFolder folder("damaged_sphal");
    std::ofstream(folder.path("answer.so")) << "not a library";
    search(kFolders + "/missing:" + folder.path() + ":" + kFolders + "/2");
    EXPECT_EQ(openAndAsk(), 0);
    EXPECT_THAT(logLines(), ElementsAre(HasSubstr(folder.path("answer.so"))));
}

TEST_F(LinkerTest, OnlyPlainFileNamesAreOpened) {
    search(kFolders + "/1");
    const std::string path = kFolders + "/1/answer.so";
    for (const char* name :
         {"../1/answer.so", path.c_str(), "", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(android_load_sphal_library(name, RTLD_NOW), nullptr);
    }
    EXPECT_EQ(logLines().size(), 4u);
}

}  // namespace
