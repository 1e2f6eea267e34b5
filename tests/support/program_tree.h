// The built executable in a throwaway tree: ROOT/build/kor beside ROOT/models, ROOT/spin-systems and
// ROOT/sequences, run as a script runs it.
#pragma once

#include "support/plain_text.h"
#include "support/run_program.h"

#include <filesystem>
#include <string>
#include <vector>

namespace kor_test {

/// One sector of a sequence file. blocks: xb, yb (and gx, gy, gz for a spatial sequence), one value per
/// point.
struct SectorText {
    int type = 1, points = 1, rows = 1;
    double duration_s = 1e-3;
    std::vector<std::vector<double>> blocks;
    double offset_hz = 0.0;
    std::string remark;
};

/// What the three files of a model say. Spins 1/2, weak coupling.
struct ModelText {
    std::string name;
    std::vector<double> offsets_hz;
    std::vector<double> intensities;
    double j_hz = 0.0; // between spins 1 and 2
    int sequence_type = 1;
    std::vector<SectorText> sectors;
    int ndx = 1, ndy = 1, ndz = 1;
    double x0_cm = 0, y0_cm = 0, z0_cm = 0, dx_cm = 0, dy_cm = 0, dz_cm = 0;
};

class ProgramTree {
public:
    /// Copies the built executable to root/build.
    explicit ProgramTree(const std::filesystem::path& root);

    /// Runs it in the root of the tree with these arguments; `input` is its standard input.
    ProgramResult run(const std::vector<std::string>& arguments, const std::string& input = "") const;
    /// Writes the model set and its waveforms; returns the model file's path. Its result file is named
    /// <name>.bin.
    std::string write_model(const ModelText& model) const;

    std::string root() const { return plain_name(root_); }
    std::string executable() const;
    std::string runtime() const { return root() + "/build/runtime"; }
    std::string result(const std::string& name) const { return runtime() + "/results/" + name + ".bin"; }
    /// Waveform file of a sector (from 1), as the loader spells it.
    std::string waveform(const std::string& name, int sector) const;
    /// The scratch folders of the runs so far, by name.
    std::vector<std::filesystem::path> scratch_folders() const;

private:
    std::filesystem::path root_;
};

} // namespace kor_test
