#include "trust/experiment.h"

#include "kor/runtime_state.h"
#include "kor/sequence_driver.h"
#include "kor/smoke_check_mode.h"
#include "kor/spin_system.h"
#include "support/constants.h"
#include "support/marked_matrix.h"
#include "support/run_models.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <sstream>

namespace kor_test {

namespace {

void define(const Spins& spins) {
    std::vector<double> pairs;
    for (std::size_t i = 0; i < spins.count(); ++i) {
        for (std::size_t j = i + 1; j < spins.count(); ++j) {
            pairs.push_back(spins.coupling_hz[i][j]);
        }
    }
    std::memset(kor::g_runtime.jc, 0, sizeof kor::g_runtime.jc);
    define_spins(spins.twice_spins, spins.intensity, spins.shift_hz, pairs, spins.weak);
}

double offset_at(const Train& train, const Place& place, std::size_t j) {
    return train.gx[j] * place.x + train.gy[j] * place.y + train.gz[j] * place.z + TWO_PI * train.offset_hz;
}

} // namespace

int Spins::states() const {
    int n = 1;
    for (const int twice_spin : twice_spins) {
        n *= twice_spin + 1;
    }
    return n;
}

void Train::add_sample(double bx, double by, double gradient_x, double gradient_y, double gradient_z) {
    xb.push_back(bx);
    yb.push_back(by);
    gx.push_back(gradient_x);
    gy.push_back(gradient_y);
    gz.push_back(gradient_z);
}

Place place_of(const kor::EngineGrid& grid, int voxel) {
    return {grid.x0 + voxel / (grid.ndy * grid.ndz) * grid.dx,
            grid.y0 + voxel / grid.ndz % grid.ndy * grid.dy, grid.z0 + voxel % grid.ndz * grid.dz};
}

Length length_of(const Spins& spins, const std::vector<Train>& trains, const Place& place) {
    double coupling = 0.0;
    for (std::size_t i = 0; i < spins.count(); ++i) {
        for (std::size_t j = i + 1; j < spins.count(); ++j) {
            coupling += TWO_PI * std::fabs(spins.coupling_hz[i][j]) * spins.twice_spins[i] *
                        spins.twice_spins[j] / 4.0;
        }
    }
    Length length;
    for (const Train& train : trains) {
        for (std::size_t j = 0; j < train.samples(); ++j) {
            double energy = coupling;
            for (std::size_t s = 0; s < spins.count(); ++s) {
                const double offset = offset_at(train, place, j) + TWO_PI * spins.shift_hz[s];
                energy += 0.5 * spins.twice_spins[s] * std::hypot(train.xb[j], train.yb[j], offset);
            }
            length.samples += 1.0;
            length.angle += train.dt * energy;
        }
    }
    return length;
}

double rounding_budget(const Length& length) {
    return 1e-12 + 1e-15 * (length.samples + length.angle);
}

Bench::Bench() : folder_(memory_folder()) {
    forget_model();
    kor::KOR_SetSmokeCheckMode(1); // no progress, no listings
}

Bench::~Bench() {
    forget_model();
}

void Bench::build(const Spins& spins) const {
    define(spins);
    kor::BuildSpinSystemFromPulseSequenceGlobals();
}

std::vector<Dense> Bench::run(const Experiment& experiment) const {
    const kor::EngineGrid& grid = experiment.grid;
    define(experiment.spins);
    define_grid(grid.ndx, grid.ndy, grid.ndz, grid.x0, grid.dx, grid.y0, grid.dy, grid.z0, grid.dz);
    std::vector<Sector> sectors;
    for (const Train& train : experiment.trains) {
        Sector sector;
        sector.file = "w" + std::to_string(sectors.size());
        sector.samples = static_cast<int>(train.samples());
        sector.duration_s = train.dt * sector.samples;
        sector.offset_hz = train.offset_hz;
        folder_.write(sector.file, bytes_of(train.xb) + bytes_of(train.yb) + bytes_of(train.gx) +
                                       bytes_of(train.gy) + bytes_of(train.gz));
        sectors.push_back(sector);
    }
    define_sequence(1, sectors, "result");
    std::filesystem::remove(folder_.root() / "result"); // a run that ends early leaves no states
    kor::RunCurrentPreparedModel();
    return read_density_file("result").matrices;
}

Dense Bench::propagator(const Train& train, const Place& place, double sign) const {
    static kor::CMatrix H0, r;
    const kor::RuntimeState& s = kor::g_runtime;
    kor::CMatRMultAdd(s.n, s.Izee, sign, s.Icoup, sign, H0);
    kor::EngineOpenSector({{s.n, &H0, &s.Izgrad, &s.Ixtot, &s.Iytot},
                           {static_cast<int>(train.samples()), train.dt, train.xb.data(), train.yb.data(),
                            train.gx.data(), train.gy.data(), train.gz.data(), TWO_PI * train.offset_hz},
                           {1, 1, 1, place.x, place.y, place.z, 0.0, 0.0, 0.0}});
    kor::EngineSectorPropagator(1, 1, 1, r);
    return to_dense(s.n, r);
}

Spins selected(const Spins& spins, const std::vector<std::size_t>& order) {
    Spins out;
    out.weak = spins.weak;
    for (const std::size_t i : order) {
        out.twice_spins.push_back(spins.twice_spins[i]);
        out.intensity.push_back(spins.intensity[i]);
        out.shift_hz.push_back(spins.shift_hz[i]);
        out.coupling_hz.emplace_back();
        for (const std::size_t j : order) {
            out.coupling_hz.back().push_back(spins.coupling_hz[i][j]);
        }
    }
    return out;
}

std::string description(const Experiment& experiment) {
    std::ostringstream text;
    text << "spins";
    for (const int twice_spin : experiment.spins.twice_spins) {
        text << ' ' << twice_spin << "/2";
    }
    text << (experiment.spins.weak ? ", weak" : ", exact") << ", grid " << experiment.grid.ndx << " x "
         << experiment.grid.ndy << " x " << experiment.grid.ndz << ", samples";
    for (const Train& train : experiment.trains) {
        text << ' ' << train.samples();
    }
    return text.str();
}

} // namespace kor_test
