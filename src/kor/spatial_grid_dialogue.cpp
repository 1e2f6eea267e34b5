#include "kor/spatial_grid_dialogue.h"

#include "kor/runtime_state.h"
#include "kor/spatial_grid.h"
#include "kordatafileio.h"

#include <algorithm>
#include <cstdio>

namespace kor {

namespace {

struct LengthQuestion {
    const char* prompt;
    double* cm;
};

bool ask_lengths(const LengthQuestion (&questions)[3]) {
    for (const LengthQuestion& question : questions)
        if (!scan_double(question.prompt, question.cm))
            return false;
    return true;
}

bool ask_points(const char* prompt, int* points) {
    if (!scan_int(prompt, points))
        return false;
    *points = std::max(*points, 1);
    return true;
}

bool ask_point_counts() {
    RuntimeState& rt = g_runtime;
    return ask_points("  ndx : ", &rt.ndx) && ask_points("  ndy : ", &rt.ndy) &&
           ask_points("  ndz : ", &rt.ndz);
}

bool ask_symmetric_volume() {
    RuntimeState& rt = g_runtime;
    double x = 0, y = 0, z = 0, width_x = 0, width_y = 0, width_z = 0;
    std::printf("\nCenter of simulation volume [cm]\n");
    if (!ask_lengths({{"  x-center [cm] : ", &x}, {"  y-center [cm] : ", &y}, {"  z-center [cm] : ", &z}}))
        return false;
    std::printf("\nNumber of spatial grid points\n");
    if (!ask_point_counts())
        return false;
    std::printf("\nFull simulation volume widths [cm]\n");
    if (!ask_lengths(
            {{"  widthx [cm] : ", &width_x}, {"  widthy [cm] : ", &width_y}, {"  widthz [cm] : ", &width_z}}))
        return false;
    const GridAxis axis_x = symmetric_grid_axis(rt.ndx, x, width_x);
    const GridAxis axis_y = symmetric_grid_axis(rt.ndy, y, width_y);
    const GridAxis axis_z = symmetric_grid_axis(rt.ndz, z, width_z);
    rt.x0 = axis_x.first;
    rt.dx = axis_x.step;
    rt.y0 = axis_y.first;
    rt.dy = axis_y.step;
    rt.z0 = axis_z.first;
    rt.dz = axis_z.step;
    return true;
}

bool ask_manual_grid() {
    RuntimeState& rt = g_runtime;
    std::printf("\nManual grid definition (minimum coordinate + spacing)\n");
    if (!ask_point_counts())
        return false;
    std::printf("Minimum coordinates [cm]\n");
    if (!ask_lengths({{"  x0 [cm] : ", &rt.x0}, {"  y0 [cm] : ", &rt.y0}, {"  z0 [cm] : ", &rt.z0}}))
        return false;
    std::printf("Grid spacing [cm]\n");
    if (!ask_lengths({{"  dx [cm] : ", &rt.dx}, {"  dy [cm] : ", &rt.dy}, {"  dz [cm] : ", &rt.dz}}))
        return false;
    rt.dx = grid_axis_step(rt.ndx, rt.dx);
    rt.dy = grid_axis_step(rt.ndy, rt.dy);
    rt.dz = grid_axis_step(rt.ndz, rt.dz);
    return true;
}

void print_grid_summary() {
    const RuntimeState& rt = g_runtime;
    std::printf("\nSpatial simulation domain defined.\n");
    std::printf("  ndx=%d  ndy=%d  ndz=%d\n", rt.ndx, rt.ndy, rt.ndz);
    std::printf("  x0=%.15g  y0=%.15g  z0=%.15g [cm]\n", rt.x0, rt.y0, rt.z0);
    std::printf("  dx=%.15g  dy=%.15g  dz=%.15g [cm]\n", rt.dx, rt.dy, rt.dz);
    std::printf("  Used by     : spatially resolved pulse sequences\n"
                "  Sequence type is chosen later in the pulse-sequence menu.\n");
}

} // namespace

void DefineSpatialSimulationDomain() {
    std::printf("\n           *******************************************\n"
                "           ***  SPATIAL SIMULATION DOMAIN SETUP   ***\n"
                "           *******************************************\n");
    if (!g_runtime.spinsystemdefined) {
        std::printf(">>>> No spin system is defined. Define spins first. <<<<\n");
        return;
    }
    std::printf("\nDefine the spatial simulation grid for later spatially resolved sequence calculations.\n"
                "Gradient waveforms are defined in the sequence sectors, not here.\n\n");
    int symmetric = 0;
    if (!scan_int("Use a symmetric simulation volume around a center point? [1=yes, 0=no] : ", &symmetric))
        return;
    if (!(symmetric ? ask_symmetric_volume() : ask_manual_grid()))
        return;
    g_runtime.offsetsdefined = 1;
    g_runtime.offsetset = 1;
    print_grid_summary();
}

} // namespace kor
