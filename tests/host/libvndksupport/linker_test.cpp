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

using ::testing::ElementsAre;
using ::testing::HasSubstr;

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
    ~LinkerTest() override {
        __android_log_set_logger(__android_log_stderr_logger);
        setenv("STANDIN_HAL_PATH", m_folder.c_str(), 1);
    }

    // Whether the library opens with these folders. It stays open, as such libraries do.
    static bool Opens(const std::string& folders, const char* name = "mapper.zel.so") {
        setenv("STANDIN_HAL_PATH", folders.c_str(), 1);
        return android_load_sphal_library(name, RTLD_NOW | RTLD_LOCAL) != nullptr;
    }

    const std::string m_folder = getenv("STANDIN_HAL_PATH");  // has a library
};

TEST_F(LinkerTest, OpensPlainFileNamesInTheFirstFolderThatHasThem) {
    EXPECT_TRUE(Opens(":/missing::" + m_folder + ":"));
    EXPECT_THAT(gLines, ElementsAre());
    const TemporaryFolder damaged("damaged_sphal");
    std::ofstream(damaged.Path("mapper.zel.so")) << "not a library";
    EXPECT_FALSE(Opens("/missing:" + damaged.Path() + ":" + m_folder)) << "it is not passed over";
    EXPECT_THAT(gLines, ElementsAre(HasSubstr(damaged.Path("mapper.zel.so"))));
    for (const char* name : {"./mapper.zel.so", "", static_cast<const char*>(nullptr)}) {
        EXPECT_FALSE(Opens(m_folder, name));
    }
    EXPECT_EQ(gLines.size(), 4u);
}

TEST_F(LinkerTest, WithoutASearchPathTheDevicesFolderIsUsed) {
    EXPECT_FALSE(Opens(":"));
    unsetenv("STANDIN_HAL_PATH");
    EXPECT_EQ(android_load_sphal_library("missing.so", RTLD_NOW), nullptr);
    EXPECT_THAT(gLines, ElementsAre(HasSubstr("names no folder"),
                                    HasSubstr("vndksupport: Could not load missing.so from sphal "
                                              "namespace: /vendor/lib64/hw/missing.so")));
}

}  // namespace
