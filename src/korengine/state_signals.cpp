// The signals of many states of a small system. What does not depend on the state is kept for the next ones:
// the eigenvectors V of H, Ix and Iy between them, and the turns of every line. A state then takes one
// rotation by V, a product per line, and the sums over the lines.
#include "block_eigen.h"
#include "engines.h"
#include "fast_jobs.h"
#include "free_hamiltonian.h"
#include "pack.h"
#include "rotation.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace kor {

namespace {

constexpr int kPointsTogether = 64;
constexpr int kMostPoints = 65536; // beyond, the tables are not worth their memory

/// trace(Ix rho(t)) takes Ix(a, b) rho(b, a) exp(i (E_a - E_b) t) and its mirror image from levels a <= b.
struct Receiver {
    std::vector<double> key; // H, Ix, Iy, dt and the number of points of what follows
    int points = 0;
    int within = 0, blocks = 0;        // points are blocks x within, the last ones beyond the end
    std::vector<double> re, im;        // V, n x n, an eigenvector per column
    std::vector<int> a, b;             // levels of each line
    std::vector<double> parts;         // lines x 8: Ix(a, b), Ix(b, a), Iy(a, b), Iy(b, a)
    AlignedDoubles cosine, sine;       // lines x within / 2, turns from the middle of a block
    AlignedDoubles middle_c, middle_s; // lines x blocks, turns to there
    AlignedDoubles work, amplitude, whole;

    int lines() const { return static_cast<int>(a.size()); }
};

Receiver g;

bool same_bits(const std::vector<double>& a, const std::vector<double>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0;
}

void add_line(int n, int a, int b, const std::vector<double>& x, const std::vector<double>& y) {
    const auto forth = static_cast<std::size_t>(2 * (n * a + b));
    const auto back = static_cast<std::size_t>(2 * (n * b + a));
    const double parts[8] = {x[forth], x[forth + 1], x[back], x[back + 1],
                             y[forth], y[forth + 1], y[back], y[back + 1]};
    if (std::all_of(parts, parts + 8, [](double part) { return part == 0.0; })) {
        return;
    }
    g.a.push_back(a);
    g.b.push_back(b);
    g.parts.insert(g.parts.end(), parts, parts + 8);
    if (a == b) { // a level is its own mirror image
        std::fill_n(g.parts.end() - 6, 2, 0.0);
        std::fill_n(g.parts.end() - 2, 2, 0.0);
    }
}

/// Eigenvectors into g, eigenvalues in the order of their columns returned.
std::vector<double> find_levels(int n, const std::vector<double>& h) {
    const auto width = static_cast<std::size_t>(n);
    std::vector<double> energy;
    g.re.assign(width * width, 0.0);
    g.im.assign(width * width, 0.0);
    for (const EigenBlock& block : diagonalise_blocks(n, h)) {
        for (int v = 0; v < block.size(); ++v) {
            for (std::size_t i = 0; i < block.states.size(); ++i) {
                g.re[static_cast<std::size_t>(block.states[i]) * width + energy.size()] = block.vector(v)[i];
            }
            energy.push_back(block.values[static_cast<std::size_t>(v)]);
        }
    }
    return energy;
}

void find_lines(int n, std::vector<double> x, std::vector<double> y) {
    rotate_by_planes(n, g.re.data(), g.im.data(), 1, x.data());
    rotate_by_planes(n, g.re.data(), g.im.data(), 1, y.data());
    g.a.clear();
    g.b.clear();
    g.parts.clear();
    for (int a = 0; a < n; ++a) {
        for (int b = a; b < n; ++b) {
            add_line(n, a, b, x, y);
        }
    }
}

void fill_tables(const std::vector<double>& energy, double dt, int points) {
    g.points = points;
    g.within = std::min(kPointsTogether, (points + 15) / 16 * 16);
    g.blocks = ((points + g.within - 1) / g.within + 7) / 8 * 8;
    std::vector<double> turn, block_turn;
    for (std::size_t l = 0; l < g.a.size(); ++l) {
        const double frequency =
            energy[static_cast<std::size_t>(g.a[l])] - energy[static_cast<std::size_t>(g.b[l])];
        turn.push_back(frequency * dt);
        block_turn.push_back(frequency * dt * g.within);
    }
    const auto table = [](int count) { return g.a.size() * static_cast<std::size_t>(count); };
    g.cosine.resize(table(g.within / 2));
    g.sine.resize(table(g.within / 2));
    g.middle_c.resize(table(g.blocks));
    g.middle_s.resize(table(g.blocks));
    g.work.resize(4 * table(g.blocks));
    g.amplitude.resize(table(4));
    g.whole.resize(2 * static_cast<std::size_t>(g.blocks) * static_cast<std::size_t>(g.within));
    fill_turns(turn.data(), 0.5, g.lines(), g.within / 2, g.cosine.data(), g.sine.data());
    const double middle = 0.5 * (g.within - 1) / g.within; // of the first block, in blocks
    fill_turns(block_turn.data(), middle, g.lines(), g.blocks, g.middle_c.data(), g.middle_s.data());
}

/// False when the operators are not for the fast engine. Nothing is done for those of the last time.
bool prepare_receiver(int n, const CMatrix& H, double dt, int points, const CMatrix& Ix, const CMatrix& Iy) {
    static std::vector<double> h, key;
    if (!read_free_hamiltonian(n, H, dt, h) || !all_finite(n, Ix) || !all_finite(n, Iy)) {
        return false;
    }
    std::vector<double> x(state_doubles(n)), y(x);
    CMatToPairs(n, Ix, x.data());
    CMatToPairs(n, Iy, y.data());
    key = h;
    key.insert(key.end(), x.begin(), x.end());
    key.insert(key.end(), y.begin(), y.end());
    key.push_back(dt);
    key.push_back(points);
    if (!same_bits(key, g.key)) {
        const std::vector<double> energy = find_levels(n, h);
        find_lines(n, std::move(x), std::move(y));
        fill_tables(energy, dt, points);
        g.key = key;
    }
    return true;
}

/// Adds o(a, b) r(b, a) + conj(o(b, a) r(a, b)) of one channel.
inline void add_amplitude(const double* o, const double* ab, const double* ba, double* out) {
    out[0] = o[0] * ba[0] - o[1] * ba[1] + (o[2] * ab[0] - o[3] * ab[1]);
    out[1] = o[0] * ba[1] + o[1] * ba[0] - (o[2] * ab[1] + o[3] * ab[0]);
}

/// Of a state in the eigenbasis; false when one is not finite.
bool find_amplitudes(int n, const double* state) {
    double unsound = 0.0;
    for (std::size_t l = 0; l < g.a.size(); ++l) {
        const double* ab = state + 2 * (n * g.a[l] + g.b[l]);
        const double* ba = state + 2 * (n * g.b[l] + g.a[l]);
        double* out = &g.amplitude[4 * l];
        add_amplitude(&g.parts[8 * l], ab, ba, out);
        add_amplitude(&g.parts[8 * l + 4], ab, ba, out + 2);
        const double sum = std::fabs(out[0]) + std::fabs(out[1]) + std::fabs(out[2]) + std::fabs(out[3]);
        unsound += sum - sum;
    }
    return unsound == 0.0;
}

void sum_lines(double* pairs) {
    const bool direct = g.blocks * g.within == g.points;
    fast_kernels().signal_pairs({g.lines(), g.blocks, g.within, g.amplitude.data(), g.middle_c.data(),
                                 g.middle_s.data(), g.cosine.data(), g.sine.data(), g.work.data(),
                                 direct ? pairs : g.whole.data()});
    if (!direct) {
        std::copy_n(g.whole.data(), 2 * g.points, pairs);
    }
}

/// One state by the operation for one state.
void sample_alone(int n, const CMatrix& H, double dt, int points, const double* state, const CMatrix& Ix,
                  const CMatrix& Iy, double* pairs) {
    static CMatrix rho;
    static std::vector<double> re, im;
    re.resize(static_cast<std::size_t>(points));
    im.resize(re.size());
    CMatFromPairs(n, state, rho);
    fast_sample_free_evolution(n, H, dt, points, rho, Ix, Iy, re.data(), im.data());
    for (std::size_t k = 0; k < re.size(); ++k) {
        pairs[2 * k] = std::isfinite(re[k]) ? re[k] : 0.0;
        pairs[2 * k + 1] = std::isfinite(im[k]) ? im[k] : 0.0;
    }
}

} // namespace

void fast_sample_states(int n, const CMatrix& H, double dt, int points, int count, const double* states,
                        const CMatrix& Ix, const CMatrix& Iy, double* pairs) {
    static AlignedDoubles turned;
    const bool kept = n >= 1 && n <= kMaxTurnedStates && points >= 1 && points <= kMostPoints &&
                      prepare_receiver(n, H, dt, points, Ix, Iy);
    const std::size_t size = state_doubles(n);
    if (kept) {
        turned.assign(states, states + static_cast<std::size_t>(count) * size);
        rotate_by_planes(n, g.re.data(), g.im.data(), count, turned.data());
    }
    for (int m = 0; m < count; ++m) {
        const auto offset = static_cast<std::size_t>(m);
        double* out = pairs + 2 * offset * static_cast<std::size_t>(points);
        if (kept && find_amplitudes(n, &turned[offset * size])) {
            sum_lines(out);
        } else {
            sample_alone(n, H, dt, points, states + offset * size, Ix, Iy, out);
        }
    }
}

} // namespace kor
