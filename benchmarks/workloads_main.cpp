// workloads [repeats [name ...]]: prints, for each workload, the CPU time of the plain and of the fast
// engine (best of `repeats`, alternating) and their ratio beside the goal. The plain engine runs a stated
// part of the workload; its time is scaled up. With 0 repeats only the fast engine runs, for a profiler.
// workloads growth: the fast engine's time as one quantity grows.
#include "workloads.h"

#include "kor/runtime_state.h"
#include "kor/smoke_check_mode.h"
#include "korengine.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace {

using namespace kor_benchmark;

double cpu_seconds(const std::function<void()>& work) {
    const std::clock_t start = std::clock();
    work();
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

/// Mean over as many runs as fill 20 ms.
double measure(const std::function<void()>& work) {
    double time = cpu_seconds(work);
    if (time < 0.02) {
        const int runs = static_cast<int>(0.02 / std::max(time, 1e-6)) + 1;
        time = cpu_seconds([&] {
                   for (int k = 0; k < runs; ++k) {
                       work();
                   }
               }) /
               runs;
    }
    return time;
}

bool wanted(const Workload& workload, int argc, char** argv) {
    return argc < 3 ||
           std::any_of(argv + 2, argv + argc, [&](const char* name) { return workload.name == name; });
}

void run(const Workload& workload, int repeats) {
    if (repeats == 0) {
        std::printf("%-8s %11.6f s\n", workload.name.c_str(), measure(workload.fast));
        return;
    }
    double plain = 1e300;
    double fast = 1e300;
    for (int k = 0; k < repeats; ++k) {
        kor::g_runtime.Nspins = 0; // each workload builds its own system
        kor::EngineSelect(kor::Engine::reference);
        workload.plain();
        plain = std::min(plain, cpu_seconds(workload.plain) * workload.plain_parts);
        kor::EngineSelect(kor::Engine::fast);
        workload.fast();
        fast = std::min(fast, measure(workload.fast));
    }
    const char* plan = kor::EngineSectorPlan();
    const bool wide = kor::EngineInstructionSet() == kor::InstructionSet::avx512;
    const double goal = wide ? workload.goal_avx512 : workload.goal_avx2;
    std::printf("| %-8s | %-54s | %11.4f | %11.6f | %7.0f | %7.0f | %s |\n", workload.name.c_str(),
                workload.what.c_str(), plain, fast, goal, plain / fast, plan);
    std::fflush(stdout);
}

/// The exponent between neighbouring values: the slope in a doubly logarithmic plot.
void print_growth(const Growth& growth) {
    std::printf("%s\n", growth.what.c_str());
    kor::g_runtime.Nspins = 0;
    double before = 0.0;
    int value_before = 0;
    for (const int value : growth.values) {
        const auto work = [&] { growth.fast(value); };
        work();
        double time = 1e300;
        for (int k = 0; k < 5; ++k) {
            time = std::min(time, measure(work));
        }
        std::printf("  %6d  %11.6f s", value, time);
        if (value_before > 0) {
            std::printf("  x%.2f  exponent %.2f", time / before,
                        std::log(time / before) / std::log(static_cast<double>(value) / value_before));
        }
        std::printf("\n");
        before = time;
        value_before = value;
    }
}

} // namespace

int main(int argc, char** argv) {
    const int repeats = argc > 1 ? std::max(0, std::atoi(argv[1])) : 5;
    kor::init();
    kor::KOR_SetSmokeCheckMode(1);
    if (argc > 1 && std::strcmp(argv[1], "growth") == 0) {
        for (const Growth& growth : all_growths()) {
            print_growth(growth);
        }
        return 0;
    }
    std::puts("| name | workload | plain (s) | fast (s) | goal | reached | plan |");
    std::puts("|---|---|---|---|---|---|---|");
    for (const Workload& workload : all_workloads()) {
        if (wanted(workload, argc, argv)) {
            run(workload, repeats);
        }
    }
    return 0;
}
