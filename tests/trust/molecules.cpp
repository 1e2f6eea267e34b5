#include "trust/molecules.h"

#include "support/build_paths.h"
#include "support/constants.h"

#include <bit>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace kor_test {

namespace {

constexpr double kCarrierPpm = 3.0;

std::vector<std::string> fields_of(const std::string& line) {
    std::vector<std::string> fields;
    std::istringstream text(line);
    for (std::string field; std::getline(text, field, ',');) {
        fields.push_back(field);
    }
    return fields;
}

void add_record(const std::vector<std::string>& fields, std::vector<Molecule>& molecules) {
    if (fields[0] == "molecule") {
        molecules.push_back({fields.at(1), {}, {}});
        return;
    }
    Molecule& molecule = molecules.back();
    if (fields[0] == "shift") {
        molecule.shift_ppm.push_back(std::stod(fields.at(2)));
        return;
    }
    const std::size_t i = std::stoul(fields.at(1)) - 1;
    const std::size_t j = std::stoul(fields.at(2)) - 1;
    molecule.coupling_hz.resize(molecule.count(), std::vector<double>(molecule.count(), 0.0));
    molecule.coupling_hz.at(i).at(j) = molecule.coupling_hz.at(j).at(i) = std::stod(fields.at(3));
}

/// m of spin s (from 0) in a state whose bits are the spins, the last one lowest; a set bit is m = -1/2.
double m_of(std::size_t state, std::size_t s, std::size_t spins) {
    return state >> (spins - 1 - s) & 1U ? -0.5 : 0.5;
}

/// H / 2 pi: sum of shift m and J m m on the diagonal, J / 2 between states that exchange two opposite spins.
Eigen::MatrixXd hamiltonian_hz(const Spins& spins) {
    const std::size_t count = spins.count();
    const auto n = static_cast<Eigen::Index>(1) << count;
    Eigen::MatrixXd H = Eigen::MatrixXd::Zero(n, n);
    for (Eigen::Index k = 0; k < n; ++k) {
        const auto state = static_cast<std::size_t>(k);
        for (std::size_t i = 0; i < count; ++i) {
            const double m = m_of(state, i, count);
            H(k, k) += spins.shift_hz[i] * m;
            for (std::size_t j = i + 1; j < count; ++j) {
                const double J = spins.coupling_hz[i][j];
                H(k, k) += J * m * m_of(state, j, count);
                if (!spins.weak && m != m_of(state, j, count)) {
                    const std::size_t both = std::size_t{1} << (count - 1 - i) | std::size_t{1}
                                                                                     << (count - 1 - j);
                    H(k, static_cast<Eigen::Index>(state ^ both)) += 0.5 * J;
                }
            }
        }
    }
    return H;
}

/// F+ takes every single spin from m = -1/2 to +1/2.
Eigen::MatrixXd raising(std::size_t spins) {
    const auto n = static_cast<Eigen::Index>(1) << spins;
    Eigen::MatrixXd plus = Eigen::MatrixXd::Zero(n, n);
    for (Eigen::Index a = 0; a < n; ++a) {
        for (Eigen::Index b = 0; b < n; ++b) {
            const auto from = static_cast<std::size_t>(b);
            const auto to = static_cast<std::size_t>(a);
            plus(a, b) = (from & to) == to && std::popcount(from ^ to) == 1 ? 1.0 : 0.0;
        }
    }
    return plus;
}

} // namespace

std::vector<Molecule> published_molecules() {
    std::ifstream file(std::string(source_folder()) + "/tests/data/molecules.csv");
    if (!file) {
        throw std::runtime_error("tests/data/molecules.csv cannot be read");
    }
    std::vector<Molecule> molecules;
    for (std::string line; std::getline(file, line);) {
        if (!line.empty() && line[0] != '#') {
            add_record(fields_of(line), molecules);
        }
    }
    return molecules;
}

Spins at_field(const Molecule& molecule, double field_mhz) {
    Spins spins;
    spins.weak = false;
    spins.twice_spins.assign(molecule.count(), 1);
    spins.intensity.assign(molecule.count(), 1.0);
    spins.coupling_hz = molecule.coupling_hz;
    for (const double ppm : molecule.shift_ppm) {
        spins.shift_hz.push_back((ppm - kCarrierPpm) * field_mhz);
    }
    return spins;
}

Spectrum diagonalise(const Spins& spins) {
    const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> solver(hamiltonian_hz(spins));
    const Eigen::MatrixXd& V = solver.eigenvectors();
    const Eigen::MatrixXd plus = V.transpose() * raising(spins.count()) * V;
    Spectrum spectrum{solver.eigenvalues(), {}};
    const double whole = plus.squaredNorm();
    for (Eigen::Index a = 0; a < plus.rows(); ++a) {
        for (Eigen::Index b = 0; b < plus.cols(); ++b) {
            const double share = plus(a, b) * plus(a, b) / whole;
            if (share > 1e-15) {
                spectrum.lines.push_back({spectrum.levels_hz(a) - spectrum.levels_hz(b), share});
            }
        }
    }
    return spectrum;
}

std::vector<std::complex<double>> signal_of(const std::vector<Line>& lines, int points, double dwell) {
    std::vector<std::complex<double>> signal(static_cast<std::size_t>(points));
    for (const Line& line : lines) {
        for (std::size_t k = 0; k < signal.size(); ++k) {
            signal[k] += std::polar(line.share, TWO_PI * line.hz * dwell * static_cast<double>(k));
        }
    }
    return signal;
}

} // namespace kor_test
