// Eigenvectors of a real symmetric matrix block by block, each to convergence.
#pragma once

#include <vector>

namespace kor {

/// States coupled to each other by nonzero elements, directly or through others, with their eigenvectors:
/// vector a is row a of `vectors`, one component per state.
struct EigenBlock {
    std::vector<int> states;     // 0-based, ascending
    std::vector<double> values;  // eigenvalues, in no order
    std::vector<double> vectors; // size x size, row-major

    int size() const { return static_cast<int>(states.size()); }
    const double* vector(int a) const { return &vectors[static_cast<std::size_t>(a) * states.size()]; }
};

/// h is n x n, row-major, finite. Two states belong to one block exactly when an element that is not
/// exactly zero leads from one to the other.
/// Golub & Van Loan, Matrix Computations, 8.3: Householder tridiagonalisation, implicit QR steps with
/// Wilkinson shifts until every off-diagonal element is below rounding.
std::vector<EigenBlock> diagonalise_blocks(int n, const std::vector<double>& h);

} // namespace kor
