// Compiles the steps for each instruction set, and finds out what this processor has.
//
// The steps are inline functions without instructions of their own choice: the target attribute of
// the function that they end up in decides.
#include "instruction_sets.h"

namespace imaging {

namespace {

void DevelopBaseline(const Strip& strip, const ToneTable& tone) {
    DevelopStrip(strip, tone);
}
void AverageBaseline(const AverageJob& job) {
    AverageRows(job);
}

constexpr Functions kBaseline = {DevelopBaseline, AverageBaseline};

#if defined(__x86_64__)
#define AVX2 __attribute__((target("avx2")))
#define AVX512 __attribute__((target("avx512f,avx512bw,avx512dq,avx512vl")))

AVX2 void DevelopAvx2(const Strip& strip, const ToneTable& tone) {
    DevelopStrip(strip, tone);
}
AVX2 void AverageAvx2(const AverageJob& job) {
    AverageRows(job);
}
AVX512 void DevelopAvx512(const Strip& strip, const ToneTable& tone) {
    DevelopStrip(strip, tone);
}
AVX512 void AverageAvx512(const AverageJob& job) {
    AverageRows(job);
}

constexpr Functions kAvx2 = {DevelopAvx2, AverageAvx2};
constexpr Functions kAvx512 = {DevelopAvx512, AverageAvx512};
#endif

}  // namespace

#if defined(__x86_64__)
std::vector<InstructionSet> SupportedInstructionSets() {
    std::vector<InstructionSet> sets = {InstructionSet::kBaseline};
    if (__builtin_cpu_supports("avx2")) sets.push_back(InstructionSet::kAvx2);
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
        __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl")) {
        sets.push_back(InstructionSet::kAvx512);
    }
    return sets;
}

const Functions& FunctionsFor(InstructionSet instructions) {
    switch (instructions) {
        case InstructionSet::kAvx2:
            return kAvx2;
        case InstructionSet::kAvx512:
            return kAvx512;
        case InstructionSet::kBaseline:
            break;
    }
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
