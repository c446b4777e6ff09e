// The functions that are compiled once for each instruction set.
#pragma once

#include <imaging/camera_physics.h>
#include <imaging/execution.h>

#include "steps/jobs.h"

namespace imaging {

struct Functions {
    void (*develop)(const DevelopJob& job, const ToneTable& tone);
    void (*average)(const AverageJob& job);
};

/** @param instructions one that this processor supports */
const Functions& FunctionsFor(InstructionSet instructions);

}  // namespace imaging
