// Builds the syntax tree of one .aidl file.
#pragma once

#include <base/result.h>

#include <memory>
#include <string>

#include "ast.h"

namespace aidlc {

// Positions and failures are in `file`. Fails with the first error of the text, which may be
// correct AIDL that this compiler does not support.
base::Result<std::unique_ptr<Declaration>> Parse(const std::string& text, const std::string& file);

}  // namespace aidlc
