// The ways to use the program whose files are made to fail: each a small tree of its own with a model, the
// call, and the files that the call writes for its user.
#pragma once

#include "support/program_tree.h"
#include "support/temp_tree.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace kor_test {

/// What tells a whole file from a piece of one.
enum class Contents {
    density,  // header 0, n, count; 16 n^2 bytes per matrix
    signal,   // header 1, points, count; 16 bytes per point
    pv_wave,  // header of 1024 bytes with points and count; 16 bytes per point
    table,    // text or plain numbers: nothing but its length
    model_set // part of a model: the old one or the new one, never anything else
};

struct ResultFile {
    std::string path; // below the tree
    Contents contents;
};

/// Every file below a folder with its bytes.
using Files = std::map<std::string, std::string>;

class Scenario {
public:
    std::string name;
    std::vector<std::string> arguments;
    std::string input;
    std::vector<ResultFile> results;

    const ProgramTree& program() const { return program_; }
    std::string path(const std::string& below) const { return tree_.path(below); }
    std::string root() const { return tree_.path(); }

    /// Calls for one run, with `call` as the start of what is asked for.
    ProgramCall call(ProgramCall call = {}) const;
    /// Everything below the tree but the executable and the scratch folders of runs.
    Files files() const;
    /// "dm.bin" of the run, empty when there is none: of the first scratch folder.
    std::string scratch_file(const std::string& file) const;
    bool has_scratch_file(const std::string& file) const;
    /// Makes the tree what it was when the scenario was built.
    void reset() const;

private:
    void remember() { at_start_ = files(); }

    TempTree tree_;
    ProgramTree program_{tree_.root()};
    Files at_start_;
    friend std::unique_ptr<Scenario> make_scenario(const std::string& name);
};

/// "spatial", "wide-spatial", "one-d", "two-d", "optimiser", "profile", "wide-profile", "voxel-signal",
/// "analysis" or "spectrum-2d".
std::unique_ptr<Scenario> make_scenario(const std::string& name);
std::vector<std::string> scenario_names();
/// The name in the letters and digits that a test may be called.
std::string test_name(const std::string& scenario);

/// Whether the bytes are what a reader would take for a whole file of this kind, given those of a whole one.
bool passes_for_whole(Contents contents, const std::string& bytes, const std::string& whole);

/// The model of the spatial runs: two spins, 3 x 1 x 2 voxels, two sectors and a receiver of 4 points.
ModelText grid_model(const std::string& name);

} // namespace kor_test
