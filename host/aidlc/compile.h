// One run of the compiler, without its process: read, check, emit.
#pragma once

#include <base/result.h>

#include <string>
#include <vector>

#include "emit.h"

namespace aidlc {

struct Options {
    std::vector<std::string> roots;
    Version version;
    std::vector<std::string> files;
};

// The generated files of all files named in options. Fails with lines "file:line:column: text".
base::Result<std::vector<GeneratedFile>> Compile(const Options& options);

}  // namespace aidlc
