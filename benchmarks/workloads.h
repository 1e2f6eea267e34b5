// The workloads that users wait for, each run whole by the fast engine and in part by the plain one.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace kor_benchmark {

struct Workload {
    std::string name;
    std::string what;
    std::function<void()> fast;  // the whole workload
    std::function<void()> plain; // a part of it ...
    double plain_parts;          // ... and how many such parts make the whole
    double goal_avx512;          // plain time over fast time to reach
    double goal_avx2;
    std::function<double()> multiply_adds = {}; // after a run, where arithmetic takes the time (arithmetic.h)
    bool opens_sector = true;                   // so that the engine can name its way
    std::function<void()> before = {};          // before every run of either engine, outside of its time
};

/// Makes every workload; each prepares its spin system when it is called.
std::vector<Workload> all_workloads();

/// A quantity that grows and the workload at each of its values.
struct Growth {
    std::string what;
    std::vector<int> values;
    std::function<void(int)> fast;
};
std::vector<Growth> all_growths();

} // namespace kor_benchmark
