// One run of the compiler, without its process: read, check, emit.
#pragma once

#include <string>
#include <vector>

#include "diagnostics.h"
#include "emit.h"
#include "options.h"

namespace aidlc {

/** The generated files of all files named in options; empty if anything was reported. */
std::vector<GeneratedFile> Compile(const Options& options, Diagnostics* diagnostics);

}  // namespace aidlc
