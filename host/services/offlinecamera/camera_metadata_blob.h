// Camera metadata as it travels: a byte vector that is empty or holds one packed blob.
#pragma once

#include <base/result.h>

#include <cstdint>
#include <optional>
#include <vector>

namespace offlinecamera {

// Succeeds for an empty vector and for one valid blob of exactly its length.
base::Result<base::Done> CheckMetadataBlob(const std::vector<uint8_t>& blob);

// The JPEG orientation in degrees, if a checked blob has that entry with one value.
std::optional<int32_t> FindJpegOrientation(const std::vector<uint8_t>& blob);

// A blob with the JPEG orientation in degrees; empty when out of memory.
std::vector<uint8_t> MakeResultMetadata(int32_t orientation);

}  // namespace offlinecamera
