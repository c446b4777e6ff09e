// The functions that are compiled once for each instruction set.
#pragma once

#include <imaging/execution.h>

#include "steps/average_rows.h"
#include "steps/develop_strip.h"

namespace imaging {

struct Functions {
    void (*develop)(const Strip& strip, const ToneTable& tone);
    void (*average)(const AverageJob& job);
};

/** @param instructions one that this processor supports */
const Functions& FunctionsFor(InstructionSet instructions);

}  // namespace imaging
