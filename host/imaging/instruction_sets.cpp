// Compiles the steps for each instruction set, and finds out what this processor has.
//
// The steps are inline functions: the target attribute of the function that they are inlined into
// chooses the instructions.
#include "instruction_sets.h"

#include "steps/develop_strip.h"

namespace imaging {

namespace {

void DevelopBaseline(const DevelopJob& job, const ToneTable& tone) {
    DevelopStrip(job, tone);
}
void AverageBaseline(const AverageJob& job) {
    AverageRows(job);
}

constexpr Functions kBaseline = {DevelopBaseline, AverageBaseline};

#if defined(__x86_64__)
#define AVX2 __attribute__((target("avx2")))

AVX2 void DevelopAvx2(const DevelopJob& job, const ToneTable& tone) {
    DevelopStrip(job, tone);
}
AVX2 void AverageAvx2(const AverageJob& job) {
    AverageRows(job);
}

constexpr Functions kAvx2 = {DevelopAvx2, AverageAvx2};

bool HasAvx2() {
    return __builtin_cpu_supports("avx2");
}
#else
constexpr Functions kAvx2 = kBaseline;

bool HasAvx2() {
    return false;
}
#endif

}  // namespace

std::vector<InstructionSet> SupportedInstructionSets() {
    std::vector<InstructionSet> sets = {InstructionSet::kBaseline};
    if (HasAvx2()) sets.push_back(InstructionSet::kAvx2);
    return sets;
}

const Functions& FunctionsFor(InstructionSet instructions) {
    return instructions == InstructionSet::kAvx2 ? kAvx2 : kBaseline;
}

InstructionSet FastestInstructionSet() {
    return SupportedInstructionSets().back();
}

}  // namespace imaging
