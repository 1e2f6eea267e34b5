namespace kor_benchmark {

namespace {

constexpr int kLanes = 2;

}

} // namespace kor_benchmark

#include "peak_loop.h"

namespace kor_benchmark {

double multiply_add_baseline(int rounds, double* out) {
    return multiply_add(rounds, out);
}

} // namespace kor_benchmark
