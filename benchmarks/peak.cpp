#include "peak.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>

namespace kor_benchmark {

double multiply_add_baseline(int rounds, double* out);
double multiply_add_avx2(int rounds, double* out);
double multiply_add_avx512(int rounds, double* out);

namespace {

using Loop = double (*)(int rounds, double* out);

Loop loop_of(kor::InstructionSet set) {
    switch (set) {
    case kor::InstructionSet::baseline:
        return multiply_add_baseline;
    case kor::InstructionSet::avx2:
        return multiply_add_avx2;
    case kor::InstructionSet::avx512:
        return multiply_add_avx512;
    }
    std::abort(); // not one of the enumerators
}

} // namespace

double multiply_add_peak(kor::InstructionSet set) {
    constexpr int kRounds = 4000000;
    const Loop loop = loop_of(set);
    double best = 0.0;
    double out[8];
    for (int k = 0; k < 8; ++k) {
        const std::clock_t start = std::clock();
        const double done = loop(kRounds, out);
        const double time = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        best = std::max(best, done / time);
    }
    return best;
}

} // namespace kor_benchmark
