// Compiles the steps for each instruction set, and finds out what this processor has.
//
// The steps are inline functions without instructions of their own choice: the target attribute of
// the function that they end up in decides.
#include "instruction_sets.h"

#include "steps/average_rows.h"
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
#endif

}  // namespace

#if defined(__x86_64__)
std::vector<InstructionSet> SupportedInstructionSets() {
    std::vector<InstructionSet> sets = {InstructionSet::kBaseline};
    if (__builtin_cpu_supports("avx2")) sets.push_back(InstructionSet::kAvx2);
    return sets;
}

const Functions& FunctionsFor(InstructionSet instructions) {
    if (instructions == InstructionSet::kAvx2) return kAvx2;
    return kBaseline;
}
#else
std::vector<InstructionSet> SupportedInstructionSets() {
    return {InstructionSet::kBaseline};
}

const Functions& FunctionsFor(InstructionSet) {
    return kBaseline;
}
#endif

InstructionSet FastestInstructionSet() {
    return SupportedInstructionSets().back();
}

}  // namespace imaging
