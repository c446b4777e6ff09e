// Camera metadata as it travels: a byte vector that is empty or holds one packed blob.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace offlinecamera {

/** @return empty for an empty vector or one valid blob of exactly its length; else what is wrong */
std::string CheckMetadataBlob(const std::vector<uint8_t>& blob);

/** The JPEG orientation in degrees, if a checked blob has that entry with one value. */
std::optional<int32_t> FindJpegOrientation(const std::vector<uint8_t>& blob);

/** A blob with the JPEG orientation in degrees; empty when there is no memory. */
std::vector<uint8_t> MakeResultMetadata(int32_t orientation);

}  // namespace offlinecamera
