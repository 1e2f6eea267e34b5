// Which compiled kernels run: chosen by the processor's feature bits, or by a call.
#include "fast_jobs.h"

#include "korengine.h"

#include <cstdlib>
#include <initializer_list>

namespace kor {

namespace {

InstructionSet widest() {
    for (const InstructionSet set : {InstructionSet::avx512, InstructionSet::avx2}) {
        if (EngineHasInstructionSet(set)) {
            return set;
        }
    }
    return InstructionSet::baseline;
}

InstructionSet& in_use() {
    static InstructionSet set = widest();
    return set;
}

} // namespace

bool EngineHasInstructionSet(InstructionSet set) {
    switch (set) {
    case InstructionSet::baseline:
        return true;
    case InstructionSet::avx2:
        return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
    case InstructionSet::avx512:
        return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") &&
               __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("fma");
    }
    std::abort(); // not one of the enumerators
}

bool EngineUseInstructionSet(InstructionSet set) {
    if (!EngineHasInstructionSet(set)) {
        return false;
    }
    in_use() = set;
    return true;
}

InstructionSet EngineInstructionSet() {
    return in_use();
}

const FastKernels& fast_kernels() {
    switch (in_use()) {
    case InstructionSet::baseline:
        return kBaselineKernels;
    case InstructionSet::avx2:
        return kAvx2Kernels;
    case InstructionSet::avx512:
        return kAvx512Kernels;
    }
    std::abort(); // not one of the enumerators
}

} // namespace kor
