// The fixed set of files that the test modes read, below one folder.
#pragma once

#include <optional>
#include <string>

#include "file_io.h"
#include "picture.h"

namespace offlineframes {

// The RAW10 frame, which shows most of the scene.
inline constexpr PictureSize kSensorSize = {4096, 3072};

// Makes the missing ones of these under `folder`, folders included:
//   offlinecameratest/4096_3072_RAW10.raw, offlinecameratest/4000_3000_NV12.yuv,
//   offlinecameratest/mmf_fd.yuv, metadata/original_dump.bin
// The two large frames show the same scene: the NV12 one is what development cuts from the mosaic.
// The scene is `photo`, or the chart. Existing files stay as they are. Gives one line for each
// file.
base::Result<std::string> MakeSources(const std::string& folder,
                                      const std::optional<Picture>& photo);

// One packed camera metadata blob with the JPEG settings of a request: orientation 0, quality 95,
// thumbnail quality 90, thumbnail size 0 x 0 (none).
base::Result<Bytes> MakeMetadataDump();

}  // namespace offlineframes
