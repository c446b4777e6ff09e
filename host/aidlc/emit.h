// Turns checked declarations into NDK C++ text.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ast.h"

namespace aidlc {

// Version of an interface, and the hash of what is frozen under it.
struct Version {
    std::optional<uint64_t> number;
    std::string hash;
};

struct GeneratedFile {
    std::string path;  // relative to the output folder: include/aidl/... or src/...
    std::string text;
};

// All files of one declaration: Name.h, BnName.h, BpName.h (without a leading I) and Name.cpp.
std::vector<GeneratedFile> Emit(const Declaration& declaration, const Version& version);

}  // namespace aidlc
