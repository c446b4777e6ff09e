// Resolves the types of all declarations and checks the rules that the grammar does not express.
#pragma once

#include <base/result.h>

#include "source_tree.h"

namespace aidlc {

// Checks every declaration in the tree and all that they use. Fails with one line per fault.
base::Result<base::Done> Check(SourceTree* tree);

}  // namespace aidlc
