// Relations between the results of two experiments, over random ones: what must not change a result, and
// what must change it in a known way.
#include "support/constants.h"
#include "support/run_options.h"
#include "support/worst.h"
#include "trust/random_experiment.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>

using namespace kor_test;

namespace {

using States = std::vector<Dense>;

/// Checks every voxel of `actual` against `expected`, in units of what rounding may leave.
void check_voxels(const Experiment& experiment, const States& actual, const States& expected, Worst& worst) {
    const std::string where = description(experiment);
    ASSERT_EQ(static_cast<int>(actual.size()), experiment.voxels()) << where;
    ASSERT_EQ(actual.size(), expected.size()) << where;
    for (std::size_t v = 0; v < actual.size(); ++v) {
        const Place place = place_of(experiment.grid, static_cast<int>(v));
        const Length length = length_of(experiment.spins, experiment.trains, place);
        worst.check(distance(actual[v], expected[v]), rounding_budget(length), where);
    }
}

using Relation = std::function<void(const Bench&, Random&, const Experiment&, Worst&)>;

/// One relation over 100, or 1,000, random experiments.
void over_random_experiments(unsigned seed, const std::string& name, const Relation& relation,
                             int most_states = 12) {
    const Bench bench;
    Random random(seed);
    Worst worst(name);
    const int experiments = cases(100, 1000);
    for (int k = 0; k < experiments; ++k) {
        relation(bench, random, random_experiment(random, most_states), worst);
    }
}

Train part(const Train& train, std::size_t first, std::size_t last) {
    Train out;
    out.dt = train.dt;
    out.offset_hz = train.offset_hz;
    for (std::size_t j = first; j < last; ++j) {
        out.add_sample(train.xb[j], train.yb[j], train.gx[j], train.gy[j], train.gz[j]);
    }
    return out;
}

/// The same field in twice the samples of half the length. `uneven` halves differ in the field's last bit, so
/// that they cannot be taken for one sample.
Train halved(const Train& train, bool uneven) {
    Train out;
    out.dt = 0.5 * train.dt;
    out.offset_hz = train.offset_hz;
    for (std::size_t j = 0; j < train.samples(); ++j) {
        const double next = uneven ? std::nextafter(train.xb[j], HUGE_VAL) : train.xb[j];
        for (const double bx : {train.xb[j], next}) {
            out.add_sample(bx, train.yb[j], train.gx[j], train.gy[j], train.gz[j]);
        }
    }
    return out;
}

/// The samples in the opposite order with the opposite signs.
Train undone(const Train& train) {
    Train out;
    out.dt = train.dt;
    out.offset_hz = -train.offset_hz;
    for (std::size_t j = train.samples(); j-- > 0;) {
        out.add_sample(-train.xb[j], -train.yb[j], -train.gx[j], -train.gy[j], -train.gz[j]);
    }
    return out;
}

Dense kronecker(const Dense& a, const Dense& b) {
    Dense product(a.rows() * b.rows(), a.cols() * b.cols());
    for (int i = 0; i < a.rows(); ++i) {
        for (int j = 0; j < a.cols(); ++j) {
            product.block(i * b.rows(), j * b.cols(), b.rows(), b.cols()) = a(i, j) * b;
        }
    }
    return product;
}

/// State number of a system in which spin k stands for spin order[k] of `spins`, from that system's own
/// state number, both from 0 with the last spin fastest.
int permuted_state(const Spins& spins, const std::vector<std::size_t>& order, int state) {
    std::vector<int> digit(spins.count());
    for (std::size_t k = spins.count(); k-- > 0;) {
        digit[k] = state % (spins.twice_spins[k] + 1);
        state /= spins.twice_spins[k] + 1;
    }
    int out = 0;
    for (const std::size_t k : order) {
        out = out * (spins.twice_spins[k] + 1) + digit[k];
    }
    return out;
}

} // namespace

TEST(Relations, ASectorInTwoPartsIsTheWholeOne) {
    over_random_experiments(
        1101, "split a sector",
        [](const Bench& bench, Random& random, const Experiment& whole, Worst& worst) {
            Experiment parts = whole;
            const int t = random.integer(0, static_cast<int>(whole.trains.size()) - 1);
            const Train& train = whole.trains[static_cast<std::size_t>(t)];
            const auto cut = static_cast<std::size_t>(random.integer(0, static_cast<int>(train.samples())));
            parts.trains[static_cast<std::size_t>(t)] = part(train, 0, cut);
            parts.trains.insert(parts.trains.begin() + t + 1, part(train, cut, train.samples()));
            check_voxels(whole, bench.run(parts), bench.run(whole), worst);
        });
}

TEST(Relations, TwiceTheSamplesOfHalfTheLengthGiveTheSame) {
    over_random_experiments(1102, "halve the dwell",
                            [](const Bench& bench, Random& random, const Experiment& whole, Worst& worst) {
                                Experiment fine = whole;
                                const bool uneven = random.integer(0, 1) == 1;
                                for (Train& train : fine.trains) {
                                    train = halved(train, uneven);
                                }
                                check_voxels(fine, bench.run(fine), bench.run(whole), worst);
                            });
}

TEST(Relations, TheInverseSequenceLeadsBack) {
    over_random_experiments(1103, "inverse sequence",
                            [](const Bench& bench, Random& random, const Experiment& forth, Worst& worst) {
                                const States after = bench.run(forth);
                                const int voxel = random.integer(0, forth.voxels() - 1);
                                const Place place = place_of(forth.grid, voxel);
                                Dense rho = after[static_cast<std::size_t>(voxel)];
                                for (std::size_t t = forth.trains.size(); t-- > 0;) {
                                    const Dense back = bench.propagator(undone(forth.trains[t]), place, -1.0);
                                    rho = back.adjoint() * rho * back;
                                }
                                Experiment start = forth;
                                start.trains = {Train()};
                                start.trains[0].add_sample(0.0, 0.0, 0.0, 0.0, 0.0);
                                const Length length = length_of(forth.spins, forth.trains, place);
                                worst.check(distance(rho, bench.run(start)[0]),
                                            rounding_budget({2.0 * length.samples, 2.0 * length.angle}),
                                            description(forth));
                            });
}

TEST(Relations, AShiftOfAllPhasesTurnsTheStateAboutZ) {
    over_random_experiments(1104, "shift all phases",
                            [](const Bench& bench, Random& random, const Experiment& plain, Worst& worst) {
                                const double phase = random.uniform(0.0, TWO_PI);
                                Experiment turned = plain;
                                for (Train& train : turned.trains) {
                                    for (std::size_t j = 0; j < train.samples(); ++j) {
                                        const double bx = train.xb[j];
                                        const double by = train.yb[j];
                                        train.xb[j] = bx * std::cos(phase) - by * std::sin(phase);
                                        train.yb[j] = bx * std::sin(phase) + by * std::cos(phase);
                                    }
                                }
                                States expected = bench.run(plain);
                                const Dense turn =
                                    exp_i(total_operator(plain.spins.twice_spins, Axis::z), phase);
                                for (Dense& rho : expected) {
                                    rho = turn.adjoint() * rho * turn;
                                }
                                check_voxels(plain, bench.run(turned), expected, worst);
                            });
}

TEST(Relations, PermutedSpinsGiveThePermutedState) {
    over_random_experiments(
        1105, "permute spins", [](const Bench& bench, Random& random, const Experiment& plain, Worst& worst) {
            std::vector<std::size_t> order(plain.spins.count());
            std::iota(order.begin(), order.end(), 0U);
            for (std::size_t k = order.size(); k-- > 1;) {
                std::swap(order[k], order[static_cast<std::size_t>(random.integer(0, static_cast<int>(k)))]);
            }
            Experiment permuted = plain;
            permuted.spins = selected(plain.spins, order);
            const States before = bench.run(plain);
            States expected;
            const int n = plain.spins.states();
            for (const Dense& rho : before) {
                Dense out(n, n);
                for (int i = 0; i < n; ++i) {
                    for (int j = 0; j < n; ++j) {
                        out(permuted_state(plain.spins, order, i), permuted_state(plain.spins, order, j)) =
                            rho(i, j);
                    }
                }
                expected.push_back(out);
            }
            check_voxels(permuted, bench.run(permuted), expected, worst);
        });
}

TEST(Relations, AnUncoupledSpinEvolvesByItself) {
    // Equilibrium is a sum over the spins of unit-norm terms, so in the larger space each part's state is
    // multiplied by the unit-norm identity of the other.
    over_random_experiments(
        1106, "add an uncoupled spin",
        [](const Bench& bench, Random& random, const Experiment& plain, Worst& worst) {
            const int twice_spin = random.integer(1, 2);
            Experiment alone = plain;
            alone.spins = {
                {twice_spin}, {random.uniform(-1.0, 1.0)}, {random.uniform(-500.0, 500.0)}, {{0.0}}};
            Experiment joined = plain;
            Spins& spins = joined.spins;
            spins.twice_spins.push_back(twice_spin);
            spins.intensity.push_back(alone.spins.intensity[0]);
            spins.shift_hz.push_back(alone.spins.shift_hz[0]);
            for (std::vector<double>& row : spins.coupling_hz) {
                row.push_back(0.0);
            }
            spins.coupling_hz.emplace_back(spins.count(), 0.0);
            const States first = bench.run(plain);
            const States second = bench.run(alone);
            const int n = plain.spins.states();
            const int m = twice_spin + 1;
            States expected;
            for (std::size_t v = 0; v < first.size(); ++v) {
                expected.push_back(kronecker(first[v], Dense::Identity(m, m) / std::sqrt(m)) +
                                   kronecker(Dense::Identity(n, n) / std::sqrt(n), second[v]));
            }
            check_voxels(joined, bench.run(joined), expected, worst);
        },
        6); // the joined system has up to three times as many
}

TEST(Relations, TheStateIsLinearInTheStartState) {
    over_random_experiments(
        1107, "linearity", [](const Bench& bench, Random& random, const Experiment& plain, Worst& worst) {
            Experiment other = plain;
            Experiment sum = plain;
            const double a = random.uniform(-1.0, 1.0);
            const double b = random.uniform(-1.0, 1.0);
            for (std::size_t s = 0; s < plain.spins.count(); ++s) {
                other.spins.intensity[s] = random.uniform(-1.0, 1.0);
                sum.spins.intensity[s] = a * plain.spins.intensity[s] + b * other.spins.intensity[s];
            }
            const States first = bench.run(plain);
            const States second = bench.run(other);
            States expected;
            for (std::size_t v = 0; v < first.size(); ++v) {
                expected.push_back(a * first[v] + b * second[v]);
            }
            check_voxels(sum, bench.run(sum), expected, worst);
        });
}

TEST(Relations, ExactCouplingOfNoHertzIsWeakCoupling) {
    over_random_experiments(1108, "exact with J = 0 equals weak",
                            [](const Bench& bench, Random& random, const Experiment& plain, Worst& worst) {
                                Experiment weak = plain;
                                for (std::vector<double>& row : weak.spins.coupling_hz) {
                                    std::fill(row.begin(), row.end(), random.integer(0, 1) ? 0.0 : -0.0);
                                }
                                weak.spins.weak = true;
                                Experiment exact = weak;
                                exact.spins.weak = false;
                                check_voxels(weak, bench.run(exact), bench.run(weak), worst);
                            });
}

TEST(Relations, AVoxelOfAGridIsASingleVoxelAtItsPlace) {
    over_random_experiments(1109, "one voxel of a grid",
                            [](const Bench& bench, Random& random, const Experiment& grid, Worst& worst) {
                                const int voxel = random.integer(0, grid.voxels() - 1);
                                const Place place = place_of(grid.grid, voxel);
                                Experiment single = grid;
                                single.grid = {1, 1, 1, place.x, place.y, place.z, 0.0, 0.0, 0.0};
                                check_voxels(single, bench.run(single),
                                             {bench.run(grid)[static_cast<std::size_t>(voxel)]}, worst);
                            });
}

TEST(Relations, AMirroredGridWithOppositeGradientsIsTheMirroredResult) {
    over_random_experiments(1110, "mirror the grid",
                            [](const Bench& bench, Random&, const Experiment& plain, Worst& worst) {
                                const kor::EngineGrid& g = plain.grid;
                                Experiment mirrored = plain;
                                mirrored.grid.x0 = -(g.x0 + (g.ndx - 1) * g.dx);
                                mirrored.grid.y0 = -(g.y0 + (g.ndy - 1) * g.dy);
                                mirrored.grid.z0 = -(g.z0 + (g.ndz - 1) * g.dz);
                                for (Train& train : mirrored.trains) {
                                    for (std::vector<double>* gradient : {&train.gx, &train.gy, &train.gz}) {
                                        for (double& value : *gradient) {
                                            value = -value;
                                        }
                                    }
                                }
                                States expected = bench.run(plain);
                                std::reverse(expected.begin(), expected.end());
                                check_voxels(mirrored, bench.run(mirrored), expected, worst);
                            });
}

TEST(Relations, AShiftOfTheCarrierIsAShiftOfAllSpins) {
    over_random_experiments(1111, "carrier shift",
                            [](const Bench& bench, Random& random, const Experiment& plain, Worst& worst) {
                                const double shift = random.uniform(-300.0, 300.0);
                                Experiment shifted = plain;
                                for (double& hz : shifted.spins.shift_hz) {
                                    hz += shift;
                                }
                                for (Train& train : shifted.trains) {
                                    train.offset_hz -= shift;
                                }
                                check_voxels(shifted, bench.run(shifted), bench.run(plain), worst);
                            });
}
