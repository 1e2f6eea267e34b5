// The multiply-add peak of a core, measured.
#pragma once

#include "korengine.h"

namespace kor_benchmark {

/// Multiply-adds of doubles per second of CPU time with an instruction set of this machine: the best of a few
/// loops over sums that do not depend on each other. Without a fused instruction a product and a sum count.
double multiply_add_peak(kor::InstructionSet set);

} // namespace kor_benchmark
