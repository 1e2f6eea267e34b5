#include "faults/scenarios.h"

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <stdexcept>

namespace fs = std::filesystem;

namespace kor_test {

namespace {

constexpr double SECOND_FIELD = 1570.7963267948966; // rad/s: 90 degrees in a millisecond

SectorText sector(std::size_t points, std::vector<double> x, std::vector<double> gradient,
                  const std::string& remark) {
    SectorText made;
    made.points = static_cast<int>(points);
    made.duration_s = 1e-3;
    made.blocks = {x, std::vector<double>(points, 0.0)};
    if (!gradient.empty())
        made.blocks.insert(made.blocks.end(), {gradient, gradient, gradient});
    made.remark = remark;
    return made;
}

ModelText two_spins(const std::string& name, int family) {
    ModelText model;
    model.name = name;
    model.offsets_hz = {100.0, -40.5};
    model.j_hz = 12.0;
    model.sequence_type = family;
    return model;
}

ModelText nmr_model(const std::string& name, int rows) {
    ModelText model = two_spins(name, 2);
    SectorText pulse = sector(2, {SECOND_FIELD, SECOND_FIELD}, {}, "optimizeRf[productOperator=Iy]");
    SectorText evolution = sector(1, {0.0}, {}, "evolution");
    evolution.type = 2;
    SectorText receiver = sector(4, {0.0, 0.0, 0.0, 0.0}, {}, "adc");
    if (rows > 1)
        evolution.rows = receiver.rows = rows;
    model.sectors = {pulse, receiver};
    if (rows > 1)
        model.sectors.insert(model.sectors.begin() + 1, evolution);
    return model;
}

struct Builder {
    Scenario& scenario;

    std::string write(const ModelText& model) const { return scenario.program().write_model(model); }

    void run(const ModelText& model, Contents result) const {
        scenario.arguments = {"--run-model", write(model)};
        scenario.results = {{"build/runtime/results/" + model.name + ".bin", result}};
    }

    /// A density file "density.bin" beside the model, made by an undisturbed run.
    std::string density(const ModelText& grid = grid_model("grid")) const {
        const std::string model = write(grid);
        scenario.program().run({"--run-model", model});
        fs::rename(scenario.path("build/runtime/results/grid.bin"), scenario.path("density.bin"));
        fs::remove_all(scenario.path("build/runtime"));
        return model;
    }
};

void make_optimiser(Scenario& s, const Builder& build) {
    ModelText model = nmr_model("pulse", 1);
    // Well below 90 degrees; the table of the pulse is longer than a stream's buffer.
    model.sectors[0] = sector(512, std::vector<double>(512, 500.0), {}, model.sectors[0].remark);
    build.write(model);
    s.input = "3\n1\n\n" // import
              "2\n5\n1\n1\n1\n1\n1\npulse.csv\n1\n\n7\n6\n";
    s.results = {{"build/runtime/pulse.csv", Contents::table},
                 {"build/runtime/pulse.csv.gp", Contents::table},
                 {"sequences/pulse/waveforms/sector1", Contents::model_set}};
}

/// 260 voxels: their states and their profile leave the streams' buffers several times.
ModelText wide_grid_model(const std::string& name) {
    ModelText model = grid_model(name);
    model.ndx = 26;
    model.ndz = 10;
    return model;
}

void make_profile(Scenario& s, const Builder& build, const ModelText& grid) {
    s.arguments = {"--expectation-profile", build.density(grid), s.path("density.bin"), "Iy",
                   s.path("profile.csv")};
    s.results = {{"profile.csv", Contents::table}};
}

void make_voxel_signal(Scenario& s, const Builder& build) {
    s.arguments = {"--voxel-signal", build.density(), s.path("density.bin"), "5", s.path("voxel.bin")};
    s.results = {{"voxel.bin", Contents::signal}};
}

/// Every analysis of the run menu, and the model saved over an older set. The tables and the data of 600
/// points leave a stream's buffer (8192 bytes) several times before the file is closed.
void make_analysis(Scenario& s, const Builder& build) {
    build.write(nmr_model("pulse", 1));
    build.write(nmr_model("zz", 3));
    write_file(s.path("models/zz.kormodel"), "# an older set, not finished and not offered\n");
    s.input = "3\n1\n\n2\n2\n\n"
              "3\n1\n1\nIy\n1\nvalues.txt\n\n1\n1\nIx\n2\nvalues.raw\n\n2\n\n"
              "4\n2\n600\n0.01\n0\n2\nspec\nn\n\n"
              "4\n2\n600\n0.01\n0\n1\nseparate.wave\n\n"
              "4\n1\n600\n0.01\n0\n1\naverage.wave\n\n"
              "6\nzz\n1\n\n\n7\n6\n";
    const std::string runtime = "build/runtime/";
    s.results = {
        {runtime + "results/pulse.bin", Contents::signal}, {runtime + "values.txt", Contents::table},
        {runtime + "values.raw", Contents::table},         {runtime + "spec_td.csv", Contents::table},
        {runtime + "spec_fd.csv", Contents::table},        {runtime + "spec_fd.csv.gp", Contents::table},
        {runtime + "separate.wave", Contents::pv_wave},    {runtime + "average.wave", Contents::pv_wave},
        {runtime + "korsign.bin", Contents::signal},       {"models/zz.kormodel", Contents::model_set},
        {"spin-systems/zz.korspin", Contents::model_set},  {"sequences/zz/zz.korseq", Contents::model_set}};
}

/// A 2D run without a result file: the spectrum is calculated in the working folder.
void make_spectrum_2d(Scenario& s, const Builder& build) {
    build.write(nmr_model("cosy", 4));
    s.input = "3\n1\n\n2\n"
              "1\n2\n1\n3\n\n5\n3\n\n" // the composer: no result file
              "2\n4\n0.01\n0\n2\n1\ncosy.wave\n\n7\n6\n";
    s.results = {{"build/runtime/cosy.wave", Contents::pv_wave},
                 {"build/runtime/korsign.bin", Contents::signal},
                 {"build/runtime/sort.bin", Contents::signal}};
}

template <typename Number> Number number_at(const std::string& bytes, std::size_t offset) {
    Number value;
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

std::uint64_t positive_at(const std::string& bytes, std::size_t offset) {
    const auto value = number_at<std::int32_t>(bytes, offset);
    return value > 0 ? static_cast<std::uint64_t>(value) : 0;
}

/// Whether as much stands behind the header as the numbers at `first` and behind it say.
bool has_its_size(const std::string& bytes, std::size_t header, std::size_t first, bool square) {
    if (bytes.size() < header)
        return false;
    const std::uint64_t n = positive_at(bytes, first), count = positive_at(bytes, first + 4);
    return n > 0 && count > 0 && bytes.size() >= header + 16 * n * (square ? n : 1) * count;
}

} // namespace

ModelText grid_model(const std::string& name) {
    ModelText model = two_spins(name, 1);
    model.sectors = {sector(2, {SECOND_FIELD, SECOND_FIELD}, {0.0, 1000.0}, "excitation"),
                     sector(1, {0.0}, {-500.0}, "rephase"), sector(4, {0, 0, 0, 0}, {0, 0, 0, 0}, "adc")};
    model.ndx = 3;
    model.ndz = 2;
    model.dx_cm = 0.5;
    model.dz_cm = 1.0;
    return model;
}

ProgramCall Scenario::call(ProgramCall call) const {
    call.executable = path("build/kor");
    call.arguments = arguments;
    call.input = input;
    call.working_dir = root();
    // No plot is opened; the address sanitizer does not insist on being the first library.
    call.environment.insert(call.environment.end(),
                            {{"PATH", "/nowhere"}, {"ASAN_OPTIONS", "verify_asan_link_order=0"}});
    return call;
}

Files Scenario::files() const {
    Files found;
    for (auto entry = fs::recursive_directory_iterator(root()); entry != fs::end(entry); ++entry) {
        const std::string below = fs::relative(entry->path(), root()).string();
        if (below == "build/runtime/runs")
            entry.disable_recursion_pending();
        else if (below != "build/kor" && entry->is_regular_file())
            found[below] = read_file(entry->path());
    }
    return found;
}

std::string Scenario::scratch_file(const std::string& file) const {
    const auto folders = program_.scratch_folders();
    const fs::path found = folders.empty() ? fs::path() : folders[0] / file;
    return fs::exists(found) ? read_file(found) : "";
}

bool Scenario::has_scratch_file(const std::string& file) const {
    const auto folders = program_.scratch_folders();
    return !folders.empty() && fs::exists(folders[0] / file);
}

void Scenario::reset() const {
    fs::remove_all(path("build/runtime"));
    const Files now = files();
    for (const auto& [file, bytes] : now)
        if (!at_start_.count(file))
            fs::remove(path(file));
    for (const auto& [file, bytes] : at_start_) {
        const auto found = now.find(file);
        if (found == now.end() || found->second != bytes)
            write_file(path(file), bytes);
    }
}

std::unique_ptr<Scenario> make_scenario(const std::string& name) {
    auto scenario = std::make_unique<Scenario>();
    Scenario& s = *scenario;
    const Builder build{s};
    s.name = name;
    if (name == "spatial")
        build.run(grid_model("grid"), Contents::density);
    else if (name == "wide-spatial")
        build.run(wide_grid_model("grid"), Contents::density);
    else if (name == "one-d")
        build.run(nmr_model("pulse", 1), Contents::signal);
    else if (name == "two-d")
        build.run(nmr_model("cosy", 3), Contents::signal);
    else if (name == "optimiser")
        make_optimiser(s, build);
    else if (name == "profile")
        make_profile(s, build, grid_model("grid"));
    else if (name == "wide-profile")
        make_profile(s, build, wide_grid_model("grid"));
    else if (name == "voxel-signal")
        make_voxel_signal(s, build);
    else if (name == "analysis")
        make_analysis(s, build);
    else if (name == "spectrum-2d")
        make_spectrum_2d(s, build);
    else
        throw std::runtime_error("no scenario " + name);
    s.remember();
    return scenario;
}

std::vector<std::string> scenario_names() {
    return {"spatial", "wide-spatial", "one-d",        "two-d",    "optimiser",
            "profile", "wide-profile", "voxel-signal", "analysis", "spectrum-2d"};
}

std::string test_name(const std::string& scenario) {
    std::string name = scenario;
    std::erase(name, '-');
    return name;
}

bool passes_for_whole(Contents contents, const std::string& bytes, const std::string& whole) {
    switch (contents) {
    case Contents::density:
        return has_its_size(bytes, 12, 4, true);
    case Contents::signal:
        return has_its_size(bytes, 12, 4, false);
    case Contents::pv_wave:
        return has_its_size(bytes, 1024, 16, false);
    case Contents::table:
        return bytes.size() >= whole.size();
    case Contents::model_set:
        return true;
    }
    return true;
}

} // namespace kor_test
