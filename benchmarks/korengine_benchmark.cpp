// Time of the engine's operations per voxel and sample, and per point of free evolution.
#include "korengine.h"
#include "spinoperatorlib.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

namespace {

using namespace kor;

constexpr double kTwoPi = 2.0 * KOR_PI;
constexpr int kVoxels = 8; // along z, the slice axis of a typical model

/// Spins 1/2 with a ladder of shifts (Hz) and all couplings of 7 Hz, weak.
struct System {
    int n;
    CMatrix H0, Fx, Fy, Fz;
};

void add_scaled(int n, double factor, const CMatrix& term, CMatrix& sum) {
    CMatRMultAdd(n, term, factor, sum, 1.0, sum);
}

std::unique_ptr<System> make_system(int spins) {
    static SpinKet ket;
    static CMatrix single;
    static CMatrix partner;
    static CMatrix product;
    auto system = std::make_unique<System>();
    SpinIList Ilist = {};
    for (int s = 1; s <= spins; ++s) {
        Ilist[s] = 1;
    }
    const int n = system->n = infer_nstates(Ilist, spins);
    MakeKets(ket, Ilist);
    MakeTotalIx(n, spins, ket, Ilist, 0, system->Fx);
    MakeTotalIy(n, spins, ket, Ilist, 0, system->Fy);
    MakeTotalIz(n, spins, ket, Ilist, 0, system->Fz);
    for (int i = 1; i <= spins; ++i) {
        MakeMatrixIz(Ilist, ket, n, i, single);
        add_scaled(n, kTwoPi * (60.0 * i - 200.0), single, system->H0);
        for (int j = i + 1; j <= spins; ++j) {
            MakeMatrixIz(Ilist, ket, n, j, partner);
            CMatMultSparse(n, single, partner, product);
            add_scaled(n, kTwoPi * 7.0, product, system->H0);
        }
    }
    return system;
}

int spins_of(benchmark::State& state) {
    return static_cast<int>(state.range(0));
}

/// A shaped pulse in a gradient over a line of voxels: 20 us samples, 500 Hz of field, 1 kHz per cm.
void SectorPropagator(benchmark::State& state) {
    const auto system = make_system(spins_of(state));
    static CMatrix r;
    const int samples = system->n >= 64 ? 8 : 64;
    const auto length = static_cast<std::size_t>(samples);
    const std::vector<double> xb(length, kTwoPi * 500.0);
    const std::vector<double> yb(length, kTwoPi * 120.0);
    const std::vector<double> none(length, 0.0);
    const std::vector<double> gz(length, kTwoPi * 1000.0);
    const EngineSector sector = {
        {system->n, &system->H0, &system->Fz, &system->Fx, &system->Fy},
        {samples, 2e-5, xb.data(), yb.data(), none.data(), none.data(), gz.data(), 0.0},
        {1, 1, kVoxels, 0.0, 0.0, -1.0, 0.0, 0.0, 2.0 / (kVoxels - 1)}};
    for ([[maybe_unused]] auto step : state) {
        EngineOpenSector(sector);
        for (int iz = 1; iz <= kVoxels; ++iz) {
            EngineSectorPropagator(1, 1, iz, r);
            benchmark::DoNotOptimize(r[1][1][1]);
        }
    }
    state.counters["n"] = system->n;
    state.counters["per_voxel_and_sample"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * kVoxels * samples,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

/// Free evolution at a dwell of 0.5 ms; the step exponential is part of it, as in a real acquisition.
void FreeEvolution(benchmark::State& state) {
    const auto system = make_system(spins_of(state));
    const int points = system->n >= 256 ? 16 : system->n >= 64 ? 64 : 1024;
    std::vector<double> re(static_cast<std::size_t>(points));
    std::vector<double> im(static_cast<std::size_t>(points));
    for ([[maybe_unused]] auto step : state) {
        EngineSampleFreeEvolution(system->n, system->H0, 5e-4, points, system->Fx, system->Fx, system->Fy,
                                  re.data(), im.data());
        benchmark::DoNotOptimize(re.data());
    }
    state.counters["n"] = system->n;
    state.counters["per_point"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * points,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

/// The argument is the number of spins 1/2: n = 4, 16, 64 and n = 16, 64, 256.
BENCHMARK(SectorPropagator)->ArgName("spins")->Arg(2)->Arg(4)->Arg(6)->Unit(benchmark::kMillisecond);
BENCHMARK(FreeEvolution)->ArgName("spins")->Arg(4)->Arg(6)->Arg(8)->Unit(benchmark::kMillisecond);

} // namespace
