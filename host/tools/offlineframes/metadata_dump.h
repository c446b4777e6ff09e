// The metadata that goes with the source frames.
#pragma once

#include "file_io.h"
#include "result.h"

namespace offlineframes {

// One packed camera metadata blob with the JPEG settings of a request: orientation 0, quality 95,
// thumbnail quality 90, thumbnail size 0 x 0 (none).
Result<Bytes> makeMetadataDump();

}  // namespace offlineframes
