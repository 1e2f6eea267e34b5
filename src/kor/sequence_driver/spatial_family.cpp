// The spatially resolved family: sector by sector, every voxel of the grid.
#include "kor/sequence_driver.h"

#include "kor/propagation.h"
#include "kor/runtime_state.h"
#include "rfwaveformfile.h"
#include "sectors.h"

#include <cstdio>

namespace kor {

namespace {

int sectors_before_acquisition() {
    const RuntimeState& s = g_runtime;
    int count = 0;
    while (count < s.nos && !kor_is_acquisition_remark(s.remarks[count + 1])) {
        ++count;
    }
    return count;
}

void select_spatial_sector(int k) {
    RuntimeState& s = g_runtime;
    select_sector(k);
    s.x0_s = s.x0;
    s.dx_s = s.dx;
    s.y0_s = s.y0;
    s.dy_s = s.dy;
    s.z0_s = s.z0;
    s.dz_s = s.dz;
    s.spatial_progress_sector = k;
}

void describe_sector(int k) {
    const RuntimeState& s = g_runtime;
    inform("\nCalculating sector                      : %d\n", k);
    inform("Number of time intervals in this sector : %d\n", s.ap);
    inform("Sector or pulsetime                [ms] : %.9g\n", 1000.0 * s.pt);
    inform("Reading pulse file                      : %s\n", s.fnames[k]);
}

bool load_samples(int k) {
    const RuntimeState& s = g_runtime;
    if (!LoadSpatialSectorPulseFile(s.fnames[k], s.ap)) {
        report_unreadable_pulse_file(k);
        return false;
    }
    const double* const arrays[] = {s.xb, s.yb, s.gx, s.gy, s.gz};
    const int l = first_bad_sample(arrays, 5, s.ap);
    if (l >= 0) {
        std::printf("Bad pulse sample at l=%d: xb=%g yb=%g gx=%g gy=%g gz=%g\n", l, s.xb[l], s.yb[l], s.gx[l],
                    s.gy[l], s.gz[l]);
    }
    return l < 0;
}

void describe_grid_and_remark(int k) {
    const RuntimeState& s = g_runtime;
    inform("Spatial starting point x-direction [cm] : %.15g\n", s.x0_s);
    inform("Spatial x-stepsize                 [cm] : %.15g\n", s.dx_s);
    inform("Spatial starting point y-direction [cm] : %.15g\n", s.y0_s);
    inform("Spatial y-stepsize                 [cm] : %.15g\n", s.dy_s);
    inform("Spatial starting point z-direction [cm] : %.15g\n", s.z0_s);
    inform("Spatial z-stepsize                 [cm] : %.15g\n", s.dz_s);
    inform("Remark : %s\n\n", s.remarks[k]);
}

/// False when the sector failed: it has said why, and calc has not advanced.
bool run_sector(int k) {
    select_spatial_sector(k);
    describe_sector(k);
    if (!load_samples(k)) {
        return false;
    }
    describe_grid_and_remark(k);
    const int done = g_runtime.calc;
    Rotate3D();
    return g_runtime.calc > done;
}

} // namespace

void SimulateLoadedPulseSequence() {
    RuntimeState& s = g_runtime;
    if (!start_sequence_run()) {
        return;
    }
    s.spatial_progress_sector_count = sectors_before_acquisition();
    inform("# x-direction : %d  # y-direction : %d  # z-direction : %d\n", s.ndx, s.ndy, s.ndz);
    inform("Number of pulse sectors to calculate      : %d\n", s.nos);
    for (int k = 1; k <= s.spatial_progress_sector_count; ++k) {
        if (!run_sector(k)) {
            return;
        }
    }
    if (s.spatial_progress_sector_count < s.nos) {
        inform("\nSpatial propagation stops at acquisition sector %d.\n",
               s.spatial_progress_sector_count + 1);
        inform("The density matrix is stored at acquisition start.\n");
    }
    if (s.resultflnm[0]) {
        publish_density_file("spatial density-matrix");
    }
}

} // namespace kor
