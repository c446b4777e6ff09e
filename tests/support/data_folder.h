// A folder of the test's own in the place of the tool's data folder.
#pragma once

#include <string>
#include <vector>

#include "tests/support/temporary_folder.h"

namespace test {

// While it lives, the tool's fopen() and stat() of paths below /data/vendor/camera go to a new
// folder, which is removed at the end. One at a time.
class DataFolder {
  public:
    DataFolder();
    ~DataFolder();

    // Paths are relative to /data/vendor/camera, such as "offlinecameratest/mmf_fd.yuv".
    void Write(const std::string& path, const std::string& bytes);
    std::string Read(const std::string& path) const;

    // Names of the dumps, in alphabetical order.
    std::vector<std::string> Dumps() const;

    // Takes the folder away: nothing can be opened any more.
    void Remove();

    // From now on the tool's stat() fails.
    void FailStat();

  private:
    const TemporaryFolder m_folder{"offlinecamera"};
};

}  // namespace test
