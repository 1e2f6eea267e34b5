// Published molecules and their spectra by an independent diagonalisation: the Hamiltonian of spins 1/2
// written from its formula, its levels by Eigen, lines as differences of levels.
#pragma once

#include "trust/experiment.h"

#include <Eigen/Dense>

#include <complex>
#include <string>
#include <vector>

namespace kor_test {

struct Molecule {
    std::string name;
    std::vector<double> shift_ppm;
    std::vector<std::vector<double>> coupling_hz; // [i][j], from 0, symmetric

    std::size_t count() const { return shift_ppm.size(); }
};

/// All of tests/data/molecules.csv.
std::vector<Molecule> published_molecules();

/// Spins of exact coupling and unit intensity at a field (MHz) with the carrier at 3 ppm.
Spins at_field(const Molecule& molecule, double field_mhz);

/// A spectral line: position and its share of the whole intensity.
struct Line {
    double hz, share;
};

struct Spectrum {
    Eigen::VectorXd levels_hz; // ascending
    std::vector<Line> lines;   // of transverse magnetisation, shares above 1e-15
};
/// Shares |<a| F+ |b>|^2 over their sum, positions E_a - E_b. Spins 1/2 only.
Spectrum diagonalise(const Spins& spins);

/// sum of share exp(2 pi i f t) at t = k dwell.
std::vector<std::complex<double>> signal_of(const std::vector<Line>& lines, int points, double dwell);

} // namespace kor_test
