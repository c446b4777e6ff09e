// Files read whole through one checked reader, and written so that half a file is never seen.
#pragma once

#include <base/result.h>

#include <cstdint>
#include <string>
#include <vector>

namespace offlineframes {

using base::Done;
using base::Failure;
using base::Result;
using Bytes = std::vector<uint8_t>;

// Largest file that is read, and largest frame that is made.
inline constexpr uint64_t kMaxFileBytes = uint64_t{1} << 30;

// Reads a regular file whole. Fails for a missing, unreadable, empty, irregular or too large file.
Result<Bytes> ReadFile(const std::string& path);

// Fails when no new file can be put at `path`, before the work of making it is done. An existing
// file is in the way unless it may be replaced; only a regular file ever is.
Result<Done> CheckWritable(const std::string& path, bool replace);

// Writes `bytes` to a temporary name beside `path` and renames it, so `path` holds either its old
// content or all of the new. Nothing is left behind on failure, nor by Ctrl-C.
Result<Done> WriteFile(const std::string& path, const Bytes& bytes);

}  // namespace offlineframes
