// How the work on a frame is carried out. The result never depends on it.
#pragma once

#include <cstdint>
#include <vector>

namespace imaging {

// The instructions that a frame's inner loops may use, slowest first.
enum class InstructionSet : uint8_t {
    kBaseline,  // what every processor of this architecture has (SSE2 on x86-64, NEON on arm64)
    kAvx2,      // (AVX-512 brought nothing: the tone curve's look-ups take the most time)
};

// Those that this processor has: kBaseline first, the fastest last.
std::vector<InstructionSet> SupportedInstructionSets();

InstructionSet FastestInstructionSet();

// As many threads as the machine has processors, at most 8.
uint32_t DefaultThreads();

struct Execution {
    uint32_t threads = DefaultThreads();                    // 0 counts as 1
    InstructionSet instructions = FastestInstructionSet();  // one that is supported
};

}  // namespace imaging
