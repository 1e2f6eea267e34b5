// One source for every instruction set: a file that includes this one has set kLanes, the doubles of a vector
// register, in its anonymous namespace.
#pragma once

namespace kor_benchmark {

namespace {

typedef double Lanes __attribute__((vector_size(8 * kLanes)));

constexpr int kSums = 12; // more than the latency of two units, fewer than the registers

/// Returns the multiply-adds done; *out keeps the compiler from leaving them out.
double multiply_add(int rounds, double* out) {
    Lanes sum[kSums];
    for (int i = 0; i < kSums; ++i) {
        sum[i] = Lanes{} + i; // equal ones would be computed once
    }
    const Lanes factor = Lanes{} + 0.999;
    const Lanes term = Lanes{} + 1e-3;
    for (int r = 0; r < rounds; ++r) {
#pragma GCC unroll 12
        for (int i = 0; i < kSums; ++i) {
            sum[i] = sum[i] * factor + term;
        }
    }
    for (int i = 1; i < kSums; ++i) {
        sum[0] += sum[i];
    }
    for (int lane = 0; lane < kLanes; ++lane) {
        out[lane] = sum[0][lane];
    }
    return static_cast<double>(rounds) * kSums * kLanes;
}

} // namespace

} // namespace kor_benchmark
