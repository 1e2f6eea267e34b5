#include "kor/propagation.h"

#include "consoleutil.h"
#include "kor/density_file.h"
#include "kor/runtime_state.h"
#include "kor/smoke_check_mode.h"
#include "kor/spatial_grid.h"
#include "kor/spin_system.h"
#include "korengine.h"
#include "sequencetypes.h"

#include <algorithm>
#include <cstdio>

namespace kor {

namespace {

constexpr DensityReport kSpatial{"Rotate3D", true};
constexpr DensityReport kRows{"Rotate2D", false};
constexpr int kNoPulse = 2;

CMatrix g_static_hamiltonian; // Izee + Icoup of the sector in progress
CMatrix g_propagator;
int g_spin_group[KOR_MAX_SPINS];
EngineSector g_sector; // the engine reads it until the next one is opened

bool no_pulse_defined() {
    if (g_runtime.pulseflag != kNoPulse) {
        return false;
    }
    std::puts(">>>> NO RF-PULSE DEFINED ERROR <<<<");
    return true;
}

/// The first sector of a run starts every matrix of "dm.bin" from densmat.
bool start_run(const DensityReport& report, long long count) {
    RuntimeState& s = g_runtime;
    if (!create_density_file(report, s.n, count, s.densmat)) {
        return false;
    }
    CMatZero(s.n, s.densmat);
    return true;
}

EngineSystem current_system() {
    RuntimeState& s = g_runtime;
    const int spins = find_alike_spins(g_spin_group);
    return {s.n, &g_static_hamiltonian, &s.Izgrad, &s.Ixtot, &s.Iytot, spins, g_spin_group};
}

void open_spatial_sector() {
    const RuntimeState& s = g_runtime;
    CMatAdd(s.n, s.Izee, s.Icoup, g_static_hamiltonian);
    g_sector.system = current_system();
    g_sector.samples = {s.ap, s.h, s.xb, s.yb, s.gx, s.gy, s.gz, s.statoff_s};
    g_sector.grid = {s.ndx, s.ndy, s.ndz, s.x0_s, s.y0_s, s.z0_s, s.dx_s, s.dy_s, s.dz_s};
    EngineOpenSector(g_sector);
}

/// The current samples at step dt, without gradients.
EngineSector row_sector(double dt, double offset) {
    const RuntimeState& s = g_runtime;
    return {current_system(),
            {s.ap, dt, s.xb, s.yb, nullptr, nullptr, nullptr, offset},
            {1, 1, 1, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0}};
}

/// Voxels that pass between two progress lines.
long long progress_stride(int voxels) {
    return voxels > 100 ? voxels / 100 : 1;
}

void print_progress(long long voxel, int voxels) {
    if (KOR_GetSmokeCheckMode()) {
        return;
    }
    const long long stride = progress_stride(voxels);
    if (voxel != 1 && voxel != voxels && voxel % stride != 0) {
        return;
    }
    const int sector = g_runtime.spatial_progress_sector;
    const int sectors = g_runtime.spatial_progress_sector_count;
    const long long total = static_cast<long long>(voxels) * sectors;
    const long long done = voxel + static_cast<long long>(voxels) * (sector - 1);
    const int percent = total > 0 ? static_cast<int>(done * 100 / total) : 100;
    std::printf("[KOR_PROGRESS] sector=%d sectors=%d voxel=%d voxels=%d percent=%d\n", sector, sectors,
                static_cast<int>(voxel), voxels, percent);
    std::fflush(stdout);
}

/// The number of the next voxel behind `done` that is reported.
long long next_report(long long done, int voxels) {
    const long long stride = progress_stride(voxels);
    const long long next = done == 0 ? 1 : (done / stride + 1) * stride;
    return std::min<long long>(next, voxels);
}

/// Rotates voxels done + 1..done + count, and reports each when it is its turn.
void rotate_and_report(double* states, long long done, int count, int voxels) {
    const int n = g_runtime.n;
    const long long end = done + count;
    while (done < end) {
        const long long next = std::min(next_report(done, voxels), end);
        const auto run = static_cast<int>(next - done);
        EngineRotateVoxels(done + 1, run, states);
        states += 2LL * n * n * run;
        done = next;
        print_progress(done, voxels);
    }
}

/// densmat is the last matrix in work.
void keep_last(const DensityStream& stream, int count) {
    RuntimeState& s = g_runtime;
    CMatFromPairs(s.n, stream.states + 2LL * s.n * s.n * (count - 1), s.densmat);
}

bool propagate_voxels(DensityStream& stream, int voxels) {
    const RuntimeState& s = g_runtime;
    for (long long done = 0; done < voxels;) {
        const int count = read_next_densities(kSpatial, stream, s.n, voxels - done);
        if (count < 1) {
            return false;
        }
        rotate_and_report(stream.states, done, count, voxels);
        keep_last(stream, count);
        if (!write_next_densities(kSpatial, stream, s.n, count)) {
            return false;
        }
        done += count;
    }
    return true;
}

/// Rotates rows first..first + count - 1; g_propagator is that of a sector that is no evolution sector.
void rotate_rows(double* states, bool evolution, int first, int count) {
    if (evolution) {
        EngineRotateRows(g_sector, first, count, states);
    } else {
        EngineRotateStates(g_runtime.n, g_propagator, count, states);
    }
}

/// The same with a "*" behind each row, unless the quiet mode is on.
void rotate_and_show(double* states, bool evolution, int first, int count) {
    if (KOR_GetSmokeCheckMode()) {
        rotate_rows(states, evolution, first, count);
        return;
    }
    for (int k = 0; k < count; ++k) {
        rotate_rows(states + 2LL * g_runtime.n * g_runtime.n * k, evolution, first + k, 1);
        std::fputs("*", stdout);
        std::fflush(stdout);
    }
}

bool propagate_rows(DensityStream& stream, bool evolution, double h_local, double offset) {
    const RuntimeState& s = g_runtime;
    CMatAdd(s.n, s.Izee, s.Icoup, g_static_hamiltonian);
    g_sector = row_sector(h_local, offset);
    if (!evolution) {
        EngineOpenSector(g_sector);
        EngineSectorPropagator(1, 1, 1, g_propagator);
    }
    for (int done = 0; done < s.ndw;) {
        const int count = read_next_densities(kRows, stream, s.n, s.ndw - done);
        if (count < 1) {
            return false;
        }
        rotate_and_show(stream.states, evolution, done + 1, count);
        keep_last(stream, count);
        if (!write_next_densities(kRows, stream, s.n, count)) {
            return false;
        }
        done += count;
    }
    return true;
}

void count_sector() {
    ++g_runtime.calc;
    if (!KOR_GetSmokeCheckMode()) {
        std::puts("");
    }
}

} // namespace

void Rotate3D() {
    RuntimeState& s = g_runtime;
    if (no_pulse_defined()) {
        console_wait_for_enter();
        return;
    }
    int voxels;
    if (!count_voxels(&voxels)) {
        return;
    }
    if (s.calc == 0) {
        s.ndw = voxels;
        if (!start_run(kSpatial, voxels)) {
            return;
        }
    }
    DensityStream stream;
    if (!open_density_stream(kSpatial, s.n, voxels, stream)) {
        return;
    }
    open_spatial_sector();
    if (!propagate_voxels(stream, voxels)) {
        abandon_density_stream(stream);
        return;
    }
    if (close_density_stream(kSpatial, stream) && rename_store()) {
        count_sector();
    }
}

void Rotate2D_internal(int sectortype, double h_local, double statoff_local) {
    RuntimeState& s = g_runtime;
    if (no_pulse_defined()) {
        return;
    }
    const bool ready =
        s.calc == 0 ? start_run(kRows, s.ndw) : resize_density_file(kRows, s.n, s.ndw, s.densmat);
    DensityStream stream;
    if (!ready || !open_density_stream(kRows, s.n, s.ndw, stream)) {
        return;
    }
    if (!propagate_rows(stream, sectortype == NMR_SECTOR_EVOLUTION, h_local, statoff_local)) {
        abandon_density_stream(stream);
        return;
    }
    if (close_density_stream(kRows, stream) && copy_store(kRows)) {
        count_sector();
    }
}

} // namespace kor
