// A folder of one test, removed at its end with everything in it.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <string>

class TemporaryFolder {
  public:
    explicit TemporaryFolder(const std::string& name) : m_path(::testing::TempDir() + name) {
        m_path += "-XXXXXX";
        if (mkdtemp(m_path.data()) == nullptr) abort();
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& Path() const { return m_path; }
    std::string Path(const std::string& name) const { return m_path + "/" + name; }

  private:
    std::string m_path;
};
