#include "workloads.h"

#include "arithmetic.h"
#include "definitions.h"

#include "kor/propagation.h"
#include "kor/runtime_state.h"
#include "korengine.h"
#include "koroptseq.h"
#include "observablespectrumcalculator/signal_file.h"
#include "spinoperatorlib.h"
#include "support/plain_spin_system.h"

#include <cmath>
#include <cstdio>

namespace kor_benchmark {

namespace {

using namespace kor;

/// A run begins in a folder without files of an earlier one: those are not its own to remove.
void remove_files() {
    for (const char* name : {"dm.bin", "store", "korsign.bin"}) {
        std::remove(name);
    }
}

/// A run that makes files, each time in a folder without older ones.
Workload in_new_folder(Workload workload) {
    workload.before = remove_files;
    return workload;
}

/// The same where a result of the same size stands already and is replaced.
Workload over_older_result(Workload workload) {
    workload.what = workload.name + " over an older result";
    workload.name += "/over";
    workload.goal_avx512 = workload.goal_avx2 = 0.0;
    return workload;
}

void slice_pulse() {
    set_sinc_gauss(256, 5e-3, KOR_PI / 2, 800.0, 600.0, 0.0, {0.0, 0.0, 1000.0});
}

Workload w0() {
    const auto part = [](int voxels) {
        set_spins(proton());
        set_grid({}, {}, {voxels, -2.0, 2.0});
        slice_pulse();
        propagate_only();
    };
    return {"W0", "1 spin, 256 samples, 256 voxels", [=] { part(256); }, [=] { part(64); }, 4.0, 250.0,
            140.0};
}

/// Changes some samples of a pulse a little, in both components alike, so that it is no palindrome.
void remove_symmetry() {
    for (int j = 0; j < 40; ++j) {
        g_runtime.xb[j] *= 1.0 + 1e-9 * (j + 1);
        g_runtime.yb[j] *= 1.0 + 1e-9 * (j + 1);
    }
}

Workload w1() {
    const auto part = [](int voxels) {
        set_spins(ax3());
        set_grid({}, {}, {voxels, -2.0, 2.0});
        slice_pulse();
        start_run();
        Rotate3D();
    };
    return {
        "W1",  "AX3, 256 samples, 256 voxels, whole run", [=] { part(256); }, [=] { part(4); }, 64.0, 250.0,
        180.0, [] { return lane_multiply_adds({8, 4}); }};
}

Workload w1_general() {
    const auto part = [](int voxels) {
        Spins spins = ax3();
        spins.offsets = {170.0, -170.0, -171.0, -172.0};
        set_spins(spins);
        set_grid({}, {}, {voxels, -2.0, 2.0});
        slice_pulse();
        remove_symmetry();
        propagate_only();
    };
    return {
        "W1g", "4 unlike spins, no palindrome, propagators", [=] { part(256); }, [=] { part(4); }, 64.0, 55.0,
        30.0,  [] { return lane_multiply_adds({16}); }};
}

void w2_run(int planes) {
    const Axis line{32, -1.0, 1.0};
    const Axis across = planes == 32 ? line : Axis{planes, 0.0, 0.0};
    set_spins(pair());
    set_grid(line, across, across);
    start_run();
    set_hard_pulse(1);
    Rotate3D();
    set_sinc_gauss(512, 8e-3, KOR_PI, 600.0, 400.0, 30.0, {1500.0, 0.0, 0.0});
    Rotate3D();
    set_waveform(64, 10e-3, {0.0, 0.0, 0.0});
    Rotate3D();
}

Workload w2() {
    return {"W2",
            "2 spins, 32^3 voxels, 3 sectors, whole run with files",
            [] { w2_run(32); },
            [] { w2_run(1); },
            1024.0,
            800.0,
            700.0};
}

/// With `tilt`, one sample's gradient is a little off the direction of the others, so that each voxel has a
/// history of its own (and the pulse is no palindrome).
Workload w2_oblique(double tilt, const char* name, const char* what, double goal_avx512, double goal_avx2) {
    const auto part = [=](int planes) {
        const Axis line{32, -1.0, 1.0};
        const Axis across = planes == 32 ? line : Axis{planes, 0.0, 0.0};
        set_spins(pair());
        set_grid(line, across, across);
        set_sinc_gauss(512, 8e-3, KOR_PI, 600.0, 400.0, 0.0, {1500.0, 0.37 * 1500.0, -0.61 * 1500.0});
        g_runtime.gz[100] *= 1.0 + tilt;
        propagate_only();
    };
    return {name, what, [=] { part(32); }, [=] { part(1); }, 1024.0, goal_avx512, goal_avx2};
}

enum class Symmetry { none, palindrome };

Workload w3(Coupling coupling, Symmetry symmetry, const char* name, double goal_avx512, double goal_avx2) {
    const auto part = [=](int voxels, int samples) {
        set_spins(six_spins(coupling));
        set_grid({}, {}, {voxels, -1.0, 1.0});
        set_sinc_gauss(256, 5e-3, KOR_PI / 2, 800.0, 600.0, 30.0, {0.0, 0.0, 1000.0});
        if (symmetry == Symmetry::none) {
            remove_symmetry();
        }
        if (samples < 256) { // every (256 / samples)-th sample
            for (int j = 0; j < samples; ++j) {
                g_runtime.xb[j] = g_runtime.xb[j * (256 / samples)];
                g_runtime.yb[j] = g_runtime.yb[j * (256 / samples)];
            }
            g_runtime.ap = samples;
        }
        propagate_only();
    };
    const std::string what = std::string("6 spins ") + (coupling == Coupling::exact ? "exact" : "weak") +
                             ", 256 samples, 16 voxels" +
                             (symmetry == Symmetry::palindrome ? ", palindrome" : "");
    return {name,        what,      [=] { part(16, 256); }, [=] { part(4, 8); }, 128.0,
            goal_avx512, goal_avx2, column_multiply_adds};
}

Workload w4(int points, double goal_avx512, double goal_avx2) {
    const auto part = [](int count) {
        RuntimeState& s = g_runtime;
        static std::vector<double> re, im;
        static CMatrix H;
        re.resize(static_cast<std::size_t>(count));
        im.resize(static_cast<std::size_t>(count));
        CMatAdd(s.n, s.Izee, s.Icoup, H);
        EngineSampleFreeEvolution(s.n, H, 1.0 / 4096, count, s.Ixtot, s.Ixtot, s.Iytot, re.data(), im.data());
    };
    const auto prepared = [=](int count) {
        if (g_runtime.Nspins != 8) {
            set_spins(eight_spins());
        }
        part(count);
    };
    return {"W4/" + std::to_string(points),
            "8 spins, FID",
            [=] { prepared(points); },
            [=] { prepared(2); },
            points / 2.0,
            goal_avx512,
            goal_avx2,
            [=] { return signal_multiply_adds(8, points); },
            false};
}

Workload w4_pulse() {
    const auto part = [](int samples) {
        if (g_runtime.Nspins != 8) {
            set_spins(eight_spins());
        }
        set_grid({}, {}, {});
        set_sinc_gauss(samples, samples * 2e-5, KOR_PI / 2, 5000.0, 600.0, 30.0, {0.0, 0.0, 0.0});
        propagate_only();
    };
    return {"W4/pulse", "8 spins, 16-sample pulse", [=] { part(16); }, [=] { part(1); }, 16.0, 0.0,
            0.0,        column_multiply_adds};
}

void w5_run(int rows, int points) {
    RuntimeState& s = g_runtime;
    set_spins(pair());
    set_grid({}, {}, {});
    start_run();
    s.ndw = rows;
    set_hard_pulse(1);
    Rotate2D_internal(1, s.h, 0.0);
    set_waveform(1, 0.5e-3, {0.0, 0.0, 0.0});
    Rotate2D_internal(2, s.h, 0.0);
    set_hard_pulse(1);
    Rotate2D_internal(1, s.h, 0.0);
    CMatAdd(s.n, s.Izee, s.Icoup, s.Istat);
    SeparateSpectra_GenerateSignalWithParams(&s.n, points, points * 0.5e-3, 0.0, nullptr, s.densmat, s.Istat,
                                             s.Ixtot, s.Iytot, s.Iztot, s.ket, s.Ilist);
}

Workload w5() {
    return {"W5",
            "2 spins, 256 rows, 1024 points, with files",
            [] { w5_run(256, 1024); },
            [] { w5_run(256, 1024); },
            1.0,
            40.0,
            35.0};
}

Workload w6() {
    const auto evaluate = [] {
        RuntimeState& s = g_runtime;
        static std::vector<double> parameters;
        if (s.Nspins != 3) {
            set_spins({{60.0, -45.0, 120.0}, [](int i, int j) { return 7.0 + i + j; }, Coupling::exact});
            CopyCMatrix(s.n, s.Ixtot, s.Istat);
            s.statoff_s = 0.0;
            set_waveform(256, 256 * 2e-5, {0.0, 0.0, 0.0}); // the modes without a parameter stay as they are
            parameters.assign(64, 0.0);
            for (std::size_t k = 0; k < parameters.size(); ++k) {
                parameters[k] = 400.0 * std::cos(1.0 + static_cast<double>(k * k));
            }
        }
        KOROptEvaluatePulseObjective(nullptr, s.n, 256, 64, 2e-5, 0.0, 0.0, parameters.data(), nullptr,
                                     nullptr);
    };
    const auto ten = [=] {
        for (int k = 0; k < 10; ++k) {
            evaluate();
        }
    };
    return {"W6", "3 spins, 256 samples, 10 optimiser evaluations", ten, ten, 1.0, 40.0, 25.0};
}

/// A quarter of the plain set-up: two of eight spins, seven of 28 pairs.
Workload w7() {
    const auto plain = [] {
        static kor_test::PlainSpinSystem system;
        if (g_runtime.Nspins != 8) {
            set_spins(eight_spins());
        }
        kor_test::build_plain(kor_test::kPlainByDefinition, 2, 7, system);
    };
    return {"W7", "8 spins, operator set-up", [] { set_spins(eight_spins()); }, plain, 4.0, 500.0, 500.0, {},
            false};
}

} // namespace

std::vector<Workload> all_workloads() {
    return {w0(),
            in_new_folder(w1()),
            w1_general(),
            in_new_folder(w2()),
            over_older_result(w2()),
            w2_oblique(0.0, "W2o", "sector 2 of W2, oblique gradient", 1500.0, 800.0),
            w2_oblique(1e-6, "W2d", "W2o voxel by voxel: one gradient sample off", 60.0, 0.0),
            w3(Coupling::exact, Symmetry::none, "W3e", 85.0, 45.0),
            w3(Coupling::weak, Symmetry::none, "W3w", 150.0, 95.0),
            w3(Coupling::exact, Symmetry::palindrome, "W3ep", 150.0, 0.0),
            w3(Coupling::weak, Symmetry::palindrome, "W3wp", 270.0, 0.0),
            w4(1024, 5000.0, 4000.0),
            w4(4096, 10000.0, 7000.0),
            w4_pulse(),
            in_new_folder(w5()),
            over_older_result(w5()),
            w6(),
            w7()};
}

std::vector<Growth> all_growths() {
    const auto unlike = [](int spins) {
        Spins some = eight_spins();
        some.offsets.resize(static_cast<std::size_t>(spins));
        return some;
    };
    const auto pulse = [=](int spins, int voxels, int samples) {
        if (g_runtime.Nspins != spins) {
            set_spins(unlike(spins));
        }
        set_grid({}, {}, {voxels, -2.0, 2.0});
        set_sinc_gauss(samples, samples * 2e-5, KOR_PI / 2, 800.0, 600.0, 30.0, {0.0, 0.0, 10000.0});
        g_runtime.xb[1] *= 1.5; // no palindrome
        propagate_only();
    };
    const auto signal = [](int points) {
        RuntimeState& s = g_runtime;
        if (s.Nspins != 8) {
            set_spins(eight_spins());
        }
        static std::vector<double> re(65536), im(65536);
        EngineSampleFreeEvolution(s.n, s.Icoup, 1.0 / 4096, points, s.Ixtot, s.Ixtot, s.Iytot, re.data(),
                                  im.data());
    };
    return {{"voxels (4 spins, 128 samples)", {16, 32, 64, 128, 256}, [=](int v) { pulse(4, v, 128); }},
            {"samples (4 spins, 64 voxels)", {64, 128, 256, 512, 1024}, [=](int v) { pulse(4, 64, v); }},
            {"spins (8 voxels, 16 samples)", {1, 2, 3, 4, 5, 6, 7, 8}, [=](int v) { pulse(v, 8, 16); }},
            {"points (8 spins)", {1024, 2048, 4096, 8192, 16384}, signal}};
}

} // namespace kor_benchmark
