#include "kor/propagation.h"

#include "consoleutil.h"
#include "kor/density_file.h"
#include "kor/runtime_state.h"
#include "kor/smoke_check_mode.h"
#include "kor/spatial_grid.h"
#include "kor/spin_system.h"
#include "korengine.h"
#include "sequencetypes.h"

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

/// The propagator of the current samples at step dt, without gradients.
void make_row_propagator(double dt, double offset) {
    const RuntimeState& s = g_runtime;
    g_sector.system = current_system();
    g_sector.samples = {s.ap, dt, s.xb, s.yb, nullptr, nullptr, nullptr, offset};
    g_sector.grid = {1, 1, 1, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0};
    EngineOpenSector(g_sector);
    EngineSectorPropagator(1, 1, 1, g_propagator);
}

void print_progress(long long voxel, int voxels) {
    if (KOR_GetSmokeCheckMode()) {
        return;
    }
    const long long stride = voxels > 100 ? voxels / 100 : 1;
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

bool propagate_voxel(const DensityStream& stream, int kx, int ky, int kz) {
    RuntimeState& s = g_runtime;
    if (!read_next_density(kSpatial, stream, s.n, s.densmat)) {
        return false;
    }
    EngineSectorPropagator(kx, ky, kz, g_propagator);
    EngineRotate(s.n, g_propagator, s.densmat);
    return write_next_density(kSpatial, stream, s.n, s.densmat);
}

bool propagate_voxels(const DensityStream& stream, int voxels) {
    const RuntimeState& s = g_runtime;
    for (int kx = 1; kx <= s.ndx; ++kx) {
        for (int ky = 1; ky <= s.ndy; ++ky) {
            for (int kz = 1; kz <= s.ndz; ++kz) {
                if (!propagate_voxel(stream, kx, ky, kz)) {
                    return false;
                }
                print_progress(voxel_number(kx, ky, kz, s.ndy, s.ndz), voxels);
            }
        }
    }
    return true;
}

bool propagate_rows(const DensityStream& stream, bool evolution, double h_local, double offset) {
    RuntimeState& s = g_runtime;
    CMatAdd(s.n, s.Izee, s.Icoup, g_static_hamiltonian);
    if (!evolution) {
        make_row_propagator(h_local, offset);
    }
    for (int k = 1; k <= s.ndw; ++k) {
        if (!read_next_density(kRows, stream, s.n, s.densmat)) {
            return false;
        }
        if (evolution) {
            make_row_propagator((k - 1) * h_local, offset);
        }
        EngineRotate(s.n, g_propagator, s.densmat);
        if (!write_next_density(kRows, stream, s.n, s.densmat)) {
            return false;
        }
        if (!KOR_GetSmokeCheckMode()) {
            std::fputs("*", stdout);
            std::fflush(stdout);
        }
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
    const long long count = static_cast<long long>(s.ndz) * s.ndx * s.ndy;
    const int voxels = static_cast<int>(count);
    if (s.calc == 0) {
        s.ndw = voxels;
        if (!start_run(kSpatial, count)) {
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
