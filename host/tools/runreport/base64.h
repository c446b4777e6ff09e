// Bytes as text that a data: URL can hold (RFC 4648, section 4).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace runreport {

std::string base64(const std::vector<uint8_t>& bytes);

}  // namespace runreport
