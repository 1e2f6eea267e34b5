// workloads [--set baseline|avx2|avx512] [repeats [name ...]]: prints, for each workload, the CPU time of the
// plain and of the fast engine (best of `repeats`, alternating) and their ratio beside the goal. The plain
// engine runs a stated part of the workload; its time is scaled up. The fast engine runs with every
// instruction set that has a goal and that the machine offers, or with the given one alone. With 0 repeats
// only the fast engine runs, for a profiler.
// "peak" is the share of the core's multiply-add peak (peak.h) that the counted arithmetic (arithmetic.h)
// takes. workloads [--set ...] growth: the fast engine's time as one quantity grows.
#include "peak.h"
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
#include <string>
#include <vector>

namespace {

using namespace kor_benchmark;

double cpu_seconds(const std::function<void()>& work) {
    const std::clock_t start = std::clock();
    work();
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

constexpr double kMeasured = 0.02; // s

/// Mean over as many runs as fill 20 ms.
double measure(const std::function<void()>& work) {
    double time = cpu_seconds(work);
    if (time < kMeasured) {
        const int runs = static_cast<int>(kMeasured / std::max(time, 1e-6)) + 1;
        time = cpu_seconds([&] {
                   for (int k = 0; k < runs; ++k) {
                       work();
                   }
               }) /
               runs;
    }
    return time;
}

/// One run of a part of the workload.
double run_once(const Workload& workload, const std::function<void()>& part) {
    if (workload.before) {
        workload.before();
    }
    return cpu_seconds(part);
}

/// Where something comes before each run, the runs are measured one by one, to the microsecond: the mean of
/// many knows more.
double measure_fast(const Workload& workload) {
    if (!workload.before) {
        return measure(workload.fast);
    }
    double total = 0.0;
    int runs = 0;
    for (; total < kMeasured; ++runs) {
        total += run_once(workload, workload.fast);
    }
    return total / runs;
}

struct NamedSet {
    const char* name;
    kor::InstructionSet set;
};
constexpr NamedSet kSets[] = {{"avx512", kor::InstructionSet::avx512},
                              {"avx2", kor::InstructionSet::avx2},
                              {"baseline", kor::InstructionSet::baseline}};

double goal_of(const Workload& workload, kor::InstructionSet set) {
    switch (set) {
    case kor::InstructionSet::avx512:
        return workload.goal_avx512;
    case kor::InstructionSet::avx2:
        return workload.goal_avx2;
    case kor::InstructionSet::baseline:
        return 0.0;
    }
    std::abort(); // not one of the enumerators
}

/// The workload's multiply-adds per second in percent of what the core can do, measured now: shared machines
/// change their pace.
std::string share_of_peak(const Workload& workload, const NamedSet& set, double time) {
    if (!workload.multiply_adds) {
        return "";
    }
    const double share = workload.multiply_adds() / time / multiply_add_peak(set.set);
    return std::to_string(std::lround(100.0 * share)) + '%';
}

struct Request {
    std::vector<NamedSet> sets; // to measure, the first one in use at the start
    int repeats = 5;
    bool growth = false;
    std::vector<std::string> names; // empty: all
};

bool wanted(const Workload& workload, const Request& request) {
    return request.names.empty() ||
           std::find(request.names.begin(), request.names.end(), workload.name) != request.names.end();
}

void profile(const Workload& workload, const Request& request) {
    for (const NamedSet& set : request.sets) {
        kor::EngineUseInstructionSet(set.set);
        std::printf("%-8s %-8s %11.6f s\n", workload.name.c_str(), set.name, measure_fast(workload));
    }
}

void run(const Workload& workload, const Request& request) {
    double plain = 1e300;
    std::vector<double> fast(request.sets.size(), 1e300);
    for (int k = 0; k < request.repeats; ++k) {
        kor::g_runtime.Nspins = 0; // each workload builds its own system
        kor::EngineSelect(kor::Engine::reference);
        workload.plain();
        plain = std::min(plain, run_once(workload, workload.plain) * workload.plain_parts);
        kor::EngineSelect(kor::Engine::fast);
        for (std::size_t i = 0; i < fast.size(); ++i) {
            kor::EngineUseInstructionSet(request.sets[i].set);
            workload.fast();
            fast[i] = std::min(fast[i], measure_fast(workload));
        }
    }
    for (std::size_t i = 0; i < fast.size(); ++i) {
        std::printf("| %-8s | %-54s | %-8s | %11.4f | %11.6f | %7.0f | %7.0f | %4s | %s |\n",
                    workload.name.c_str(), workload.what.c_str(), request.sets[i].name, plain, fast[i],
                    goal_of(workload, request.sets[i].set), plain / fast[i],
                    share_of_peak(workload, request.sets[i], fast[i]).c_str(),
                    workload.opens_sector ? kor::EngineSectorPlan() : "");
    }
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

/// The sets to measure: the one called `name`, or all that have goals. Empty when the machine lacks it.
std::vector<NamedSet> sets_to_measure(const char* name) {
    std::vector<NamedSet> sets;
    for (const NamedSet& set : kSets) {
        const bool chosen =
            name ? std::strcmp(name, set.name) == 0 : set.set != kor::InstructionSet::baseline;
        if (chosen && kor::EngineHasInstructionSet(set.set)) {
            sets.push_back(set);
        }
    }
    if (!name && sets.empty()) {
        return sets_to_measure("baseline");
    }
    return sets;
}

Request parse(int argc, char** argv) {
    Request request;
    const bool forced = argc > 2 && std::strcmp(argv[1], "--set") == 0;
    request.sets = sets_to_measure(forced ? argv[2] : nullptr);
    const int at = forced ? 3 : 1;
    request.growth = argc > at && std::strcmp(argv[at], "growth") == 0;
    request.repeats = argc > at ? std::max(0, std::atoi(argv[at])) : 5;
    for (int k = at + 1; k < argc; ++k) {
        request.names.emplace_back(argv[k]);
    }
    return request;
}

} // namespace

int main(int argc, char** argv) {
    const Request request = parse(argc, argv);
    if (request.sets.empty()) {
        std::fputs("this machine does not offer that instruction set\n", stderr);
        return 1;
    }
    kor::init();
    kor::KOR_SetSmokeCheckMode(1);
    kor::EngineUseInstructionSet(request.sets.front().set);
    if (request.growth) {
        for (const Growth& growth : all_growths()) {
            print_growth(growth);
        }
        return 0;
    }
    for (const NamedSet& set : request.sets) {
        std::printf("peak:     %.1f thousand million multiply-adds per second (%s)\n",
                    1e-9 * multiply_add_peak(set.set), set.name);
    }
    std::puts("");
    std::puts("| name | workload | set | plain (s) | fast (s) | goal | reached | peak | plan |");
    std::puts("|---|---|---|---|---|---|---|---|---|");
    for (const Workload& workload : all_workloads()) {
        if (wanted(workload, request)) {
            request.repeats > 0 ? run(workload, request) : profile(workload, request);
        }
    }
    return 0;
}
