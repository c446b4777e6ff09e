// Lines of a text file of any size and content.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace runreport {

inline constexpr size_t kMaxLineBytes = 4096;

/**
 * Calls `take` for each line of the file, without its newline; of a longer line than kMaxLineBytes
 * the beginning, with a remark of how much is left out. A last line without newline counts.
 *
 * @return empty, or why the file could not be read to its end
 */
std::string forEachLine(const std::string& path, const std::function<void(std::string&&)>& take);

}  // namespace runreport
