namespace kor_benchmark {

namespace {

constexpr int kLanes = 4;

}

} // namespace kor_benchmark

#include "peak_loop.h"

namespace kor_benchmark {

double multiply_add_avx2(int rounds, double* out) {
    return multiply_add(rounds, out);
}

} // namespace kor_benchmark
