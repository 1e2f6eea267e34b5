// The shipped optimisation examples, from the menu to the pulse in its file, whose effect is computed anew by
// dense matrices.
#include "endtoend/example_oracle.h"
#include "support/build_paths.h"
#include "support/program_tree.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using example_oracle::Dense;
using example_oracle::DenseSpins;
using example_oracle::Molecule;

/// A copy of the executable with the models it offers, in a folder with a blank in its name.
class OptimiseExample : public testing::Test {
protected:
    OptimiseExample() : program_(made("my models")) {
        for (const char* folder : {"models", "spin-systems", "sequences"})
            fs::copy(fs::path(kor_test::source_folder()) / folder, fs::path(program_.root()) / folder,
                     fs::copy_options::recursive);
    }

    /// Imports the model, optimises its first sector (Re <O>, eight mode pairs, from the stored pulse) and
    /// writes the pulse back. Returns what the program printed.
    std::string optimise(const std::string& name) {
        const auto list = program_.run({}, "3\n\n6\n");
        const std::size_t line = list.out.rfind('\n', list.out.find(name + ".kormodel"));
        const std::string number = list.out.substr(line + 1, list.out.find(')', line) - line - 1);
        const auto result = program_.run({}, "3\n" + number + "\n\n2\n5\n1\n1\n8\n1\n2\n1\n\n7\n6\n");
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "");
        return result.out;
    }

    /// The samples of the written pulse: x, then y, rad/s.
    std::vector<double> pulse(const std::string& name, std::size_t points) const {
        const std::string bytes =
            kor_test::read_file(fs::path(program_.root()) / "sequences" / name / "waveforms/pulse.bin");
        EXPECT_EQ(bytes.size(), 16 * points);
        std::vector<double> samples(2 * points);
        std::memcpy(samples.data(), bytes.data(), bytes.size());
        return samples;
    }

private:
    fs::path made(const char* folder) {
        tree_.make_folder(folder);
        return tree_.root() / folder;
    }

    kor_test::TempTree tree_;

protected:
    kor_test::ProgramTree program_;
};

double printed_minimum(const std::string& out) {
    const std::string label = "Minimum             : ";
    return std::stod(out.substr(out.find(label) + label.size()));
}

/// trace(O rho) behind the pulse, from equilibrium.
double effect(const DenseSpins& spins, const Dense& observable, const std::vector<double>& pulse,
              double duration) {
    const std::size_t points = pulse.size() / 2;
    Dense rho = spins.equilibrium();
    for (std::size_t j = 0; j < points; ++j)
        rho = spins.step(rho, duration / static_cast<double>(points), pulse[j], pulse[points + j], 0.0);
    return (observable * rho).trace().real();
}

// The state diag(1, -1) / sqrt(2) and the operator Ix have unit norm: no unitary gives more than 1.
TEST_F(OptimiseExample, ExcitationOffResonanceReachesItsBound) {
    const double reached = -printed_minimum(optimise("optimise-excitation"));
    const Molecule molecule{{1}, {150.0}, {1.0}, Eigen::MatrixXd::Zero(1, 1)};
    const DenseSpins spins(molecule);
    const double recomputed = effect(spins, spins.observable(example_oracle::Axis::x, {0}),
                                     pulse("optimise-excitation", 128), 0.004);
    EXPECT_GE(recomputed, 0.999);
    EXPECT_LE(recomputed, 1.0 + 1e-12);
    EXPECT_NEAR(recomputed, reached, 1e-9);
}

// Iz + Sz at unit norm each has the eigenvalues 1, 0, 0, -1, two-spin order 1/2, 1/2, -1/2, -1/2: paired in
// order they give 1, the most that a unitary can reach.
TEST_F(OptimiseExample, TwoSpinOrderReachesNineTenthsOfItsBound) {
    const double reached = -printed_minimum(optimise("optimise-two-spin-order"));
    Molecule molecule{{1, 1}, {120.0, -80.0}, {1.0, 1.0}, Eigen::MatrixXd::Zero(2, 2)};
    example_oracle::couple(molecule, 0, 1, 10.0);
    Dense two_spin_order = Dense::Zero(4, 4);
    two_spin_order.diagonal() << 0.5, -0.5, -0.5, 0.5;
    const double recomputed =
        effect(DenseSpins(molecule), two_spin_order, pulse("optimise-two-spin-order", 128), 0.06);
    EXPECT_GE(recomputed, 0.9);
    EXPECT_LE(recomputed, 1.0 + 1e-12);
    EXPECT_NEAR(recomputed, reached, 1e-9);
}

} // namespace
