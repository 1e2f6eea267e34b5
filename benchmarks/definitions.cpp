#include "definitions.h"

#include "kor/runtime_state.h"
#include "kor/spin_system.h"
#include "korengine.h"
#include "rfpulselib/shapes.h"

#include <algorithm>

namespace kor_benchmark {

namespace {

using namespace kor;

constexpr double kTwoPi = 2.0 * KOR_PI;

} // namespace

void set_spins(const Spins& spins) {
    RuntimeState& s = g_runtime;
    s.Nspins = static_cast<int>(spins.offsets.size());
    s.Jexact = static_cast<int>(spins.coupling);
    s.Jcount = 0;
    std::fill(&s.jc[0][0], &s.jc[0][0] + sizeof s.jc / sizeof(double), 0.0);
    for (int i = 0; i < s.Nspins; ++i) {
        s.quantnum[i + 1] = 1;
        s.relspinamp[i + 1] = 1.0;
        s.resofreqs[i + 1] = spins.offsets[static_cast<std::size_t>(i)];
        for (int j = i + 1; j < s.Nspins; ++j) {
            s.couplings[++s.Jcount] = spins.j(i, j);
        }
    }
    BuildSpinSystemFromPulseSequenceGlobals();
}

Spins proton() {
    return {{0.0}, [](int, int) { return 0.0; }, Coupling::weak};
}

Spins ax3() {
    return {{170.0, -170.0, -170.0, -170.0}, [](int i, int) { return i == 0 ? 6.93 : 0.0; }, Coupling::exact};
}

Spins pair() {
    return {{60.0, -45.0}, [](int, int) { return 7.5; }, Coupling::exact};
}

namespace {

double ladder_coupling(int i, int j) {
    if (j == i + 1) {
        return 7.0 + 0.3 * i;
    }
    return j == i + 2 ? -1.5 - 0.2 * i : 0.4 + 0.05 * (i + j);
}

} // namespace

Spins six_spins(Coupling coupling) {
    return {{210.0, 95.0, 40.0, -35.0, -120.0, -260.0}, ladder_coupling, coupling};
}

Spins eight_spins() {
    return {{210.0, 95.0, 40.0, -35.0, -120.0, -260.0, 330.0, -410.0}, ladder_coupling, Coupling::exact};
}

void set_waveform(int samples, double time, const Gradient& gradient) {
    RuntimeState& s = g_runtime;
    s.ap = samples;
    s.pt = time;
    s.h = s.ti = time / samples;
    s.statoff_s = 0.0;
    std::fill_n(s.xb, samples, 0.0);
    std::fill_n(s.yb, samples, 0.0);
    std::fill_n(s.gx, samples, kTwoPi * gradient.x);
    std::fill_n(s.gy, samples, kTwoPi * gradient.y);
    std::fill_n(s.gz, samples, kTwoPi * gradient.z);
}

void set_sinc_gauss(int samples, double time, double angle, double f, double b, double phase,
                    const Gradient& gradient) {
    set_waveform(samples, time, gradient);
    sinc_gauss_waveform(samples, time / samples, phase, angle, f, b, g_runtime.xb, g_runtime.yb);
}

void set_hard_pulse(int samples) {
    set_waveform(samples, 1e-5, {0.0, 0.0, 0.0});
    rectangular_waveform(samples, 0.0, 25000.0, g_runtime.xb, g_runtime.yb);
}

void set_grid(const Axis& x, const Axis& y, const Axis& z) {
    RuntimeState& s = g_runtime;
    s.ndx = x.count;
    s.ndy = y.count;
    s.ndz = z.count;
    s.ndw = x.count * y.count * z.count;
    s.x0_s = x.first;
    s.y0_s = y.first;
    s.z0_s = z.first;
    s.dx_s = x.step();
    s.dy_s = y.step();
    s.dz_s = z.step();
}

void start_run() {
    g_runtime.calc = 0;
    g_runtime.pulseflag = 1;
    g_runtime.spatial_progress_sector = 1;
    g_runtime.spatial_progress_sector_count = 1;
}

void propagate_only() {
    RuntimeState& s = g_runtime;
    static CMatrix H0;
    static CMatrix r;
    CMatAdd(s.n, s.Izee, s.Icoup, H0);
    EngineOpenSector({{s.n, &H0, &s.Izgrad, &s.Ixtot, &s.Iytot},
                      {s.ap, s.h, s.xb, s.yb, s.gx, s.gy, s.gz, s.statoff_s},
                      {s.ndx, s.ndy, s.ndz, s.x0_s, s.y0_s, s.z0_s, s.dx_s, s.dy_s, s.dz_s}});
    for (int ix = 1; ix <= s.ndx; ++ix) {
        for (int iy = 1; iy <= s.ndy; ++iy) {
            for (int iz = 1; iz <= s.ndz; ++iz) {
                EngineSectorPropagator(ix, iy, iz, r);
            }
        }
    }
}

} // namespace kor_benchmark
