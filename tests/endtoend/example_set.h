// A throwaway copy of the program and its examples: TREE/build/kor, TREE/models, TREE/spin-systems,
// TREE/sequences. The destructor deletes it. Files that kor writes are read back here without kor's own
// readers.
#pragma once

#include "support/program_tree.h"
#include "support/temp_tree.h"

#include <complex>
#include <filesystem>
#include <string>
#include <vector>

namespace example_oracle {

struct Signals {
    int points = 0;                                      // of each row
    std::vector<std::vector<std::complex<double>>> rows; // <Ix> + i <Iy>
};

struct ProfilePoint {
    double x_cm, y_cm, z_cm;
    std::complex<double> value;
};

class ExampleSet {
public:
    ExampleSet();

    /// Runs models/NAME.kormodel and returns what the program printed; the exit status must be 0.
    std::string run(const std::string& name) const;
    /// The signal file that a run of NAME left in build/runtime/results.
    Signals result_signals(const std::string& name) const;
    /// --expectation-profile of NAME's result.
    std::vector<ProfilePoint> profile(const std::string& name, const std::string& operator_expression) const;
    /// --voxel-signal of NAME's result, voxel from 1.
    Signals voxel_signal(const std::string& name, int voxel) const;
    /// Has a blank in its name, as the folders of many people have.
    std::filesystem::path root() const { return program_.root(); }

private:
    std::string command(const std::vector<std::string>& arguments) const;
    std::string model(const std::string& name) const;

    kor_test::TempTree tree_;
    kor_test::ProgramTree program_;
};

} // namespace example_oracle
