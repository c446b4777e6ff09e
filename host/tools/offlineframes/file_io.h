// Files read whole through one checked reader, and written so that half a file is never seen.
#pragma once

#include <base/result.h>

#include <cstdint>
#include <string>
#include <vector>

namespace offlineframes {

using Bytes = std::vector<uint8_t>;

// Largest file that is read; the largest frame this program makes has fewer bytes.
inline constexpr uint64_t kMaxFileBytes = uint64_t{1} << 30;

// Reads a regular file whole. Fails for a missing, unreadable, empty, irregular or too large file.
base::Result<Bytes> ReadFile(const std::string& path);

enum class Existing { kKeep, kReplace };

// Writes `bytes` to a temporary name beside `path` and renames it, so `path` holds either its old
// content or all of the new. With kKeep an existing file is an error and stays as it is. Only a
// regular file is ever replaced. Nothing is left behind on failure, nor by Ctrl-C.
base::Result<base::Done> WriteFile(const std::string& path, const Bytes& bytes, Existing existing);

// Fails when writeFile could not put a file at `path`, before the work of making it is done.
base::Result<base::Done> CheckWritable(const std::string& path, Existing existing);

}  // namespace offlineframes
