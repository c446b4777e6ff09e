// ./run in a copy of the project whose build is this one.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/end_to_end/device_run.h"

namespace end_to_end {

class RunScript : public ::testing::Test {
  protected:
    RunScript() {
        std::filesystem::copy(PROJECT_FOLDER "/run", m_root + "/run");
        std::filesystem::copy(PROJECT_FOLDER "/scripts", m_root + "/scripts");
        std::filesystem::create_directories(m_root + "/out/build");
        std::filesystem::create_directory_symlink(std::filesystem::path(DEVICESHELL).parent_path(),
                                                  m_root + "/out/build/bin");
        // Everything is built already.
        std::ofstream(m_root + "/out/build/build.ninja")
                << "build host/all: phony\nbuild vexofflinecameratest: phony\n"
                   "build examples/all: phony\n";
    }
    Finished Run(const Words& arguments) {
        return RunProgram(Joined({{m_root + "/run"}, arguments}), CrashSettings());
    }

    const TemporaryFolder m_folder{"run script"};
    const std::string m_root = m_folder.Path();
};

}  // namespace end_to_end
