// What every sequence keeps: trace, hermiticity and purity of each voxel's state, the unitarity of each
// propagator. Random sequences through the whole program.
#include "support/run_options.h"
#include "support/worst.h"
#include "trust/random_experiment.h"

#include <set>

using namespace kor_test;

namespace {

void check_states(const Experiment& experiment, const std::vector<Dense>& states, Worst& trace,
                  Worst& hermiticity, Worst& purity) {
    const std::string where = description(experiment);
    ASSERT_EQ(static_cast<int>(states.size()), experiment.voxels()) << where;
    for (int v = 0; v < experiment.voxels(); ++v) {
        const Dense& rho = states[static_cast<std::size_t>(v)];
        const Length length = length_of(experiment.spins, experiment.trains, place_of(experiment.grid, v));
        trace.check(std::abs(rho.trace()), 1e-12, where);
        hermiticity.check(distance(rho, rho.adjoint()), 1e-14, where);
        purity.check(std::abs(rho.squaredNorm() - 1.0), rounding_budget(length), where);
    }
}

void check_propagators(const Bench& bench, const Experiment& experiment, int voxel, Worst& unitarity) {
    const Place place = place_of(experiment.grid, voxel);
    for (const Train& train : experiment.trains) {
        const Dense r = bench.propagator(train, place);
        unitarity.check(distance(r.adjoint() * r, Dense::Identity(r.rows(), r.cols())),
                        rounding_budget(length_of(experiment.spins, {train}, place)),
                        description(experiment));
    }
}

} // namespace

TEST(RandomSequences, KeepTraceHermiticityPurityAndUnitarity) {
    const Bench bench;
    Random random(1001);
    Worst trace("trace"), hermiticity("hermiticity"), purity("purity"), unitarity("unitarity");
    std::set<std::string> plans; // of the sequences' last sectors
    const int sequences = cases(1000, 10000);
    for (int k = 0; k < sequences; ++k) {
        const Experiment experiment = random_experiment(random, k % 100 == 5 ? 32 : k % 10 == 0 ? 24 : 12);
        const std::vector<Dense> states = bench.run(experiment);
        plans.insert(kor::EngineSectorPlan());
        check_states(experiment, states, trace, hermiticity, purity);
        check_propagators(bench, experiment, random.integer(0, experiment.voxels() - 1), unitarity);
    }
    if (kor::EngineSelected() == kor::Engine::fast) {
        EXPECT_EQ(plans, (std::set<std::string>{"binary columns", "columns", "equivalent spins",
                                                "free precession", "identity", "interpolation", "lanes"}));
    }
}
