// The fixed set of files that the test modes read, below one folder.
#pragma once

#include <string>

#include "file_io.h"
#include "picture_file.h"

namespace offlineframes {

// Makes the missing ones of these under `folder`, folders included:
//   offlinecameratest/4096_3072_RAW10.raw, offlinecameratest/4000_3000_NV12.yuv,
//   offlinecameratest/mmf_fd.yuv, metadata/original_dump.bin
// The two large frames show the same scene: the NV12 one is what development cuts from the mosaic.
// The scene is `photo`, or without one the chart. Existing files stay as they are. Gives one line
// for each file.
Result<std::string> MakeSources(const std::string& folder, const Picture* photo);

}  // namespace offlineframes
