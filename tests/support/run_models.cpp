#include "support/run_models.h"

#include "kor/runtime_state.h"
#include "kor/smoke_check_mode.h"
#include "support/deviation.h"
#include "support/temp_tree.h"

#include <cmath>
#include <complex>
#include <cstdio>
#include <cstring>

namespace kor_test {

using kor::g_runtime;
using kor::RuntimeState;

std::string system_line(const std::string& tag, int error) {
    return tag + ": " + std::strerror(error) + "\n";
}

DensityFile read_density_file(const std::string& name) {
    const std::string bytes = read_file(name);
    DensityFile file;
    if (bytes.size() < 12) {
        return file;
    }
    int header[3];
    std::memcpy(header, bytes.data(), 12);
    file.type = header[0];
    file.n = header[1];
    file.count = header[2];
    const std::size_t size = 16 * static_cast<std::size_t>(file.n) * static_cast<std::size_t>(file.n);
    std::size_t at = 12;
    for (; at + size <= bytes.size() && size > 0; at += size) {
        Matrix matrix(file.n, file.n);
        const char* from = bytes.data() + at;
        for (int r = 0; r < file.n; ++r) {
            for (int c = 0; c < file.n; ++c, from += 16) {
                double pair[2];
                std::memcpy(pair, from, 16);
                matrix(r, c) = {pair[0], pair[1]};
            }
        }
        file.matrices.push_back(matrix);
    }
    file.trailing_bytes = bytes.size() - at;
    return file;
}

void write_density_file(const std::string& name, int n, const std::vector<Matrix>& matrices) {
    std::vector<double> values;
    for (const Matrix& matrix : matrices) {
        for (int r = 0; r < n; ++r) {
            for (int c = 0; c < n; ++c) {
                values.push_back(matrix(r, c).real());
                values.push_back(matrix(r, c).imag());
            }
        }
    }
    write_file(name, bytes_of(std::vector<int>{0, n, static_cast<int>(matrices.size())}) + bytes_of(values));
}

namespace {

Matrix kron(const Matrix& a, const Matrix& b) {
    Matrix product(a.rows() * b.rows(), a.cols() * b.cols());
    for (Eigen::Index r = 0; r < a.rows(); ++r) {
        for (Eigen::Index c = 0; c < a.cols(); ++c) {
            product.block(r * b.rows(), c * b.cols(), b.rows(), b.cols()) = a(r, c) * b;
        }
    }
    return product;
}

/// I+ of one spin: sqrt(I(I+1) - m(m+1)) above the diagonal, m descending.
Matrix raising(int twice_spin) {
    const double spin = twice_spin / 2.0;
    Matrix plus = Matrix::Zero(twice_spin + 1, twice_spin + 1);
    for (int k = 1; k <= twice_spin; ++k) {
        const double m = spin - k;
        plus(k - 1, k) = std::sqrt(spin * (spin + 1) - m * (m + 1));
    }
    return plus;
}

Matrix on_spin(const std::vector<int>& twice_spin, std::size_t spin, const Matrix& op) {
    Matrix product = Matrix::Identity(1, 1);
    for (std::size_t s = 0; s < twice_spin.size(); ++s) {
        product = kron(product, s == spin ? op : Matrix::Identity(twice_spin[s] + 1, twice_spin[s] + 1));
    }
    return product;
}

} // namespace

DenseSystem dense_system(const std::vector<int>& twice_spin, const std::vector<double>& intensity,
                         const std::vector<double>& offset_hz, const std::vector<double>& coupling_hz,
                         bool weak) {
    const std::complex<double> i(0.0, 1.0);
    const double two_pi = 2.0 * std::acos(-1.0);
    DenseSystem system;
    for (std::size_t s = 0; s < twice_spin.size(); ++s) {
        const Matrix plus = on_spin(twice_spin, s, raising(twice_spin[s]));
        const Matrix minus = plus.adjoint();
        system.ix.push_back((plus + minus) / 2.0);
        system.iy.push_back((plus - minus) / (2.0 * i));
        system.iz.push_back((plus * minus - minus * plus) / 2.0);
    }
    system.n = static_cast<int>(system.ix[0].rows());
    system.fx = system.fy = system.fz = system.h0 = system.equilibrium = Matrix::Zero(system.n, system.n);
    std::size_t pair = 0;
    for (std::size_t s = 0; s < twice_spin.size(); ++s) {
        system.fx += system.ix[s];
        system.fy += system.iy[s];
        system.fz += system.iz[s];
        system.h0 += two_pi * offset_hz[s] * system.iz[s];
        system.equilibrium += intensity[s] * system.iz[s] / system.iz[s].norm();
        for (std::size_t t = s + 1; t < twice_spin.size(); ++t, ++pair) {
            const double j = two_pi * coupling_hz[pair];
            system.h0 += j * system.iz[s] * system.iz[t];
            if (!weak) {
                system.h0 += j * (system.ix[s] * system.ix[t] + system.iy[s] * system.iy[t]);
            }
        }
    }
    return system;
}

Matrix step_propagator(const Matrix& H, double dt) {
    const Eigen::SelfAdjointEigenSolver<Matrix> eigen(H);
    const Eigen::VectorXcd phases =
        (eigen.eigenvalues().cast<std::complex<double>>() * std::complex<double>(0.0, -dt))
            .array()
            .exp()
            .matrix();
    return eigen.eigenvectors() * phases.asDiagonal() * eigen.eigenvectors().adjoint();
}

double largest_difference(const Matrix& a, const Matrix& b) {
    if (a.rows() != b.rows() || a.cols() != b.cols()) {
        return HUGE_VAL;
    }
    double worst = 0.0;
    for (Eigen::Index k = 0; k < a.size(); ++k) {
        worst = larger_deviation(worst, std::abs(a(k) - b(k)));
    }
    return worst;
}

Matrix dense(int n, const kor::CMatrix& matrix) {
    Matrix out(n, n);
    for (int r = 0; r < n; ++r) {
        for (int c = 0; c < n; ++c) {
            out(r, c) = {matrix[r + 1][c + 1][1], matrix[r + 1][c + 1][2]};
        }
    }
    return out;
}

void set_matrix(const Matrix& from, kor::CMatrix& to) {
    for (int r = 0; r < from.rows(); ++r) {
        for (int c = 0; c < from.cols(); ++c) {
            to[r + 1][c + 1] = kor::Complex2{{0.0, from(r, c).real(), from(r, c).imag()}};
        }
    }
}

void load_operators(const DenseSystem& system) {
    RuntimeState& s = g_runtime;
    s.n = system.n;
    set_matrix(system.h0, s.Izee);
    set_matrix(Matrix::Zero(system.n, system.n), s.Icoup);
    set_matrix(system.fz, s.Izgrad);
    set_matrix(system.fx, s.Ixtot);
    set_matrix(system.fy, s.Iytot);
    set_matrix(system.fz, s.Iztot);
    set_matrix(system.equilibrium, s.densmat);
}

void forget_model() {
    std::memset(static_cast<void*>(&g_runtime), 0, sizeof g_runtime);
    kor::init();
    kor::KOR_SetSmokeCheckMode(0);
}

void define_spins(const std::vector<int>& twice_spin, const std::vector<double>& intensity,
                  const std::vector<double>& offset_hz, const std::vector<double>& coupling_hz, bool weak) {
    RuntimeState& s = g_runtime;
    s.Nspins = static_cast<int>(twice_spin.size());
    for (std::size_t k = 0; k < twice_spin.size(); ++k) {
        s.quantnum[k + 1] = twice_spin[k];
        s.relspinamp[k + 1] = intensity[k];
        s.resofreqs[k + 1] = offset_hz[k];
    }
    s.Jexact = weak ? 1 : 2;
    s.Jcount = static_cast<int>(coupling_hz.size());
    for (std::size_t k = 0; k < coupling_hz.size(); ++k) {
        s.couplings[k + 1] = coupling_hz[k];
    }
    s.systemset = 1;
}

void define_sequence(int family, const std::vector<Sector>& sectors, const std::string& result_file) {
    RuntimeState& s = g_runtime;
    s.sequencetype = family;
    s.nos = static_cast<int>(sectors.size());
    for (std::size_t k = 0; k < sectors.size(); ++k) {
        const Sector& sector = sectors[k];
        s.sectype[k + 1] = sector.type;
        s.noti[k + 1] = sector.samples;
        s.nevo[k + 1] = sector.rows;
        s.sectdur[k + 1] = sector.duration_s;
        s.statoff[k + 1] = sector.offset_hz;
        std::snprintf(s.fnames[k + 1], sizeof s.fnames[k + 1], "%s", sector.file.c_str());
        std::snprintf(s.remarks[k + 1], sizeof s.remarks[k + 1], "%s", sector.remark.c_str());
    }
    std::snprintf(s.resultflnm, sizeof s.resultflnm, "%s", result_file.c_str());
    s.sectorset = 1;
}

void define_grid(int ndx, int ndy, int ndz, double x0, double dx, double y0, double dy, double z0,
                 double dz) {
    RuntimeState& s = g_runtime;
    s.ndx = ndx;
    s.ndy = ndy;
    s.ndz = ndz;
    s.x0 = x0;
    s.dx = dx;
    s.y0 = y0;
    s.dy = dy;
    s.z0 = z0;
    s.dz = dz;
    s.offsetset = 1;
}

DenseSystem prepare_one_spin(int samples, double h) {
    forget_model();
    DenseSystem system = dense_system({1}, {1.0}, {0.0}, {}, true);
    system.equilibrium = system.iz[0];
    load_operators(system);
    define_grid(1, 1, 1, 0, 0, 0, 0, 0, 0);
    g_runtime.ap = samples;
    g_runtime.h = h;
    g_runtime.pulseflag = 1;
    g_runtime.spatial_progress_sector = 1;
    g_runtime.spatial_progress_sector_count = 1;
    return system;
}

} // namespace kor_test
