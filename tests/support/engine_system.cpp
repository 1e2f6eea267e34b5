#include "support/engine_system.h"

#include <utility>

namespace kor_test {

EngineCase::EngineCase(RandomSystem random_system, RandomWaveform waveform)
    : system(std::move(random_system)), wave(std::move(waveform)), H0_(system.H0), Fx_(system.Fx),
      Fy_(system.Fy), Fz_(system.Fz) {}

kor::EngineSector EngineCase::sector(const kor::EngineGrid& grid) const {
    const kor::CMatrix& H0 = H0_;
    const kor::CMatrix& Fx = Fx_;
    const kor::CMatrix& Fy = Fy_;
    const kor::CMatrix& Fz = Fz_;
    return {{system.n, &H0, &Fz, &Fx, &Fy},
            {wave.count, wave.dt, wave.xb.data(), wave.yb.data(), wave.gx.data(), wave.gy.data(),
             wave.gz.data(), wave.offset},
            grid};
}

kor::EngineSector EngineCase::sector() const {
    kor::EngineSector result = sector({1, 1, 1, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0});
    result.samples.gx = result.samples.gy = result.samples.gz = nullptr;
    return result;
}

Dense EngineCase::expected(double x, double y, double z) const {
    std::vector<DenseSample> samples;
    for (std::size_t j = 0; j < wave.xb.size(); ++j) {
        samples.push_back(
            {wave.xb[j], wave.yb[j], wave.gx[j] * x + wave.gy[j] * y + wave.gz[j] * z + wave.offset});
    }
    return dense_propagator(system.H0, system.Fx, system.Fy, system.Fz, samples, wave.dt);
}

double EngineCase::tolerance() const {
    // The exponentials of both sides cut their series or converge to 1e-14 or so; a sample of 0.2 ms at a
    // few kHz turns a spin by some radians, whose rounding the squarings and products add up.
    return 2e-13 * (10.0 + wave.count);
}

std::string plan_of(const kor::EngineSector& sector) {
    kor::EngineOpenSector(sector);
    return kor::EngineSectorPlan();
}

Dense sector_propagator(const kor::EngineSector& sector, int ix, int iy, int iz) {
    static kor::CMatrix r;
    kor::EngineOpenSector(sector);
    kor::EngineSectorPropagator(ix, iy, iz, r);
    return to_dense(sector.system.n, r);
}

kor::EngineGrid small_grid() {
    return {3, 2, 4, -0.5, 0.1, -0.3, 0.4, -0.3, 0.2};
}

} // namespace kor_test
