// Whole runs through the built executable: what it prints, which files it leaves and whether their numbers
// are those of the closed forms.
#include "support/constants.h"
#include "support/model_fixtures.h"
#include "support/program_tree.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <complex>
#include <cstdio>
#include <sstream>

using namespace kor_test;
namespace fs = std::filesystem;

namespace {

using Vector = std::array<double, 3>;
using Signal = std::vector<std::complex<double>>;

// A magnetisation precesses about the field (rad/s) by -|field| t: the sense of rotation in which a field
// along x turns z to +y.
Vector precess(const Vector& m, const Vector& field, double time_s) {
    const double size = std::sqrt(field[0] * field[0] + field[1] * field[1] + field[2] * field[2]);
    if (size == 0.0)
        return m;
    const Vector n = {field[0] / size, field[1] / size, field[2] / size};
    const double c = std::cos(-size * time_s), s = std::sin(-size * time_s);
    const double along = n[0] * m[0] + n[1] * m[1] + n[2] * m[2];
    const Vector cross = {n[1] * m[2] - n[2] * m[1], n[2] * m[0] - n[0] * m[2], n[0] * m[1] - n[1] * m[0]};
    Vector out{};
    for (std::size_t i = 0; i < 3; ++i)
        out[i] = m[i] * c + cross[i] * s + n[i] * along * (1.0 - c);
    return out;
}

// A flip of 90 degrees about x in a femtosecond: offsets do not act during it.
SectorText ideal_pulse() {
    SectorText pulse;
    pulse.duration_s = 1e-15;
    pulse.blocks = {{0.5 * PI / pulse.duration_s}, {0.0}};
    pulse.remark = "excitation";
    return pulse;
}

SectorText acquisition(int samples, double duration_s, double offset_hz) {
    SectorText sector;
    sector.points = samples;
    sector.duration_s = duration_s;
    sector.offset_hz = offset_hz;
    sector.blocks = {{0.0}};
    sector.remark = "ADC";
    return sector;
}

// One spin on a 2 x 2 x 3 grid: three samples of RF with gradients along all axes, a delay with a gradient,
// acquisition.
ModelText spatial_model() {
    ModelText model;
    model.name = "spatial";
    model.offsets_hz = {35.0};
    SectorText pulse;
    pulse.points = 3;
    pulse.duration_s = 3e-4;
    pulse.blocks = {{4000, 2500, 0}, {0, -1500, 6000}, {900, -300, 0}, {0, 2000, 100}, {-700, 0, 1500}};
    pulse.offset_hz = 20.0;
    pulse.remark = "shaped pulse";
    SectorText delay;
    delay.points = 2;
    delay.duration_s = 2e-3;
    delay.blocks = {{0, 0}, {0, 0}, {250, 0}, {0, 0}, {0, -125}};
    delay.remark = "delay";
    model.sectors = {pulse, delay, acquisition(32, 0.064, -12.5)};
    model.ndx = 2;
    model.ndy = 2;
    model.ndz = 3;
    model.x0_cm = -0.5;
    model.y0_cm = 0.25;
    model.z0_cm = -1.0;
    model.dx_cm = 1.0;
    model.dy_cm = 0.5;
    model.dz_cm = 0.75;
    return model;
}

Vector voxel_position(const ModelText& model, int point) {
    const int q = point - 1;
    return {model.x0_cm + model.dx_cm * (q / (model.ndy * model.ndz)),
            model.y0_cm + model.dy_cm * (q / model.ndz % model.ndy),
            model.z0_cm + model.dz_cm * (q % model.ndz)};
}

// The magnetisation of the only spin of a spatial model at the start of acquisition.
Vector magnetisation_at_acquisition(const ModelText& model, int point) {
    const Vector position = voxel_position(model, point);
    Vector m = {0.0, 0.0, 1.0};
    for (const SectorText& sector : model.sectors) {
        if (sector.remark == "ADC")
            break;
        for (std::size_t l = 0; l < static_cast<std::size_t>(sector.points); ++l) {
            double offset = 2.0 * PI * (model.offsets_hz[0] + sector.offset_hz);
            for (std::size_t axis = 0; axis < 3; ++axis)
                offset += sector.blocks[2 + axis][l] * position[axis];
            m = precess(m, {sector.blocks[0][l], sector.blocks[1][l], offset},
                        sector.duration_s / sector.points);
        }
    }
    return m;
}

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

int count_of(const std::string& text, const std::string& part) {
    int count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

void expect_signal_file(const std::string& path, int points, int signals, const Signal& expected,
                        double tolerance) {
    const std::string bytes = read_file(path);
    ASSERT_EQ(bytes.size(), 12 + 16 * expected.size());
    EXPECT_EQ(bytes.substr(0, 12), bytes_of<int>({1, points, signals}));
    const std::vector<double> samples = reals_behind_header(bytes);
    for (std::size_t k = 0; k < expected.size(); ++k) {
        EXPECT_NEAR(samples[2 * k], expected[k].real(), tolerance) << "sample " << k;
        EXPECT_NEAR(samples[2 * k + 1], expected[k].imag(), tolerance) << "sample " << k;
    }
}

// One line of a profile.
struct ProfileLine {
    int index = 0;
    Vector position{};
    double re = 0.0, im = 0.0;
};

ProfileLine parse_profile_line(const std::string& line) {
    ProfileLine p;
    EXPECT_EQ(std::sscanf(line.c_str(), "%d,%lf,%lf,%lf,%lf,%lf", &p.index, &p.position[0], &p.position[1],
                          &p.position[2], &p.re, &p.im),
              6)
        << line;
    return p;
}

} // namespace

TEST(RunModel, PrintsASmallSpatialRunInFull) {
    TempTree temp;
    const ProgramTree tree(temp.root());
    ModelText model;
    model.name = "small";
    model.offsets_hz = {10.0};
    SectorText pulse;
    pulse.duration_s = 1e-5;
    pulse.blocks = {{1000}, {0}, {0}, {0}, {0}};
    pulse.remark = "excitation";
    model.sectors = {pulse, acquisition(8, 0.5, -3.5)};
    model.ndx = 2;
    model.x0_cm = -0.5;
    model.dx_cm = 1.25;
    const std::string path = tree.write_model(model);

    const ProgramResult run = tree.run({"--run-model", path});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    const std::string listing = "\nBuildSpinSystemFromPulseSequenceGlobals()\n"
                                "  Nspins = 1\n"
                                "  n      = 2\n"
                                "  spin 1: quantnum=1  Ilist=1  relspinamp=1  resofreq=10 Hz\n"
                                "\n";
    const std::string summary = "\n[KOR] Loaded model: " + path +
                                "\n"
                                "[KOR] Spin system:\n"
                                "  nspins = 1\n"
                                "  spin quantum numbers: 1\n"
                                "  relative intensities: 1\n"
                                "  resonance offsets [Hz]: 10\n"
                                "  coupling mode = 1\n"
                                "[KOR] Sequence:\n"
                                "  sequence type = 1\n"
                                "  number of sectors = 2\n"
                                "    sector 1: type=1 timepoints=1 evolpoints=1 duration=1e-05 pulsefile=" +
                                tree.waveform("small", 1) +
                                " statoff=0 remark=excitation\n"
                                "    sector 2: type=1 timepoints=8 evolpoints=1 duration=0.5 pulsefile=" +
                                tree.waveform("small", 2) +
                                " statoff=-3.5 remark=ADC\n"
                                "[KOR] Grid/run config:\n"
                                "  ndx=2 ndy=1 ndz=1\n"
                                "  origin [cm] = (-0.5, 0, 0)\n"
                                "  delta  [cm] = (1.25, 0, 0)\n"
                                "  result file = " +
                                tree.result("small") + "\n";
    const std::string sectors = "Running current prepared spatially resolved model...\n" + listing +
                                "# x-direction : 2  # y-direction : 1  # z-direction : 1\n"
                                "Number of pulse sectors to calculate      : 2\n"
                                "\nCalculating sector                      : 1\n"
                                "Number of time intervals in this sector : 1\n"
                                "Sector or pulsetime                [ms] : 0.01\n"
                                "Reading pulse file                      : " +
                                tree.waveform("small", 1) +
                                "\n"
                                "Spatial starting point x-direction [cm] : -0.5\n"
                                "Spatial x-stepsize                 [cm] : 1.25\n"
                                "Spatial starting point y-direction [cm] : 0\n"
                                "Spatial y-stepsize                 [cm] : 0\n"
                                "Spatial starting point z-direction [cm] : 0\n"
                                "Spatial z-stepsize                 [cm] : 0\n"
                                "Remark : excitation\n\n"
                                "[KOR_PROGRESS] sector=1 sectors=1 voxel=1 voxels=2 percent=50\n"
                                "[KOR_PROGRESS] sector=1 sectors=1 voxel=2 voxels=2 percent=100\n"
                                "\n"
                                "\nSpatial propagation stops at acquisition sector 2.\n"
                                "The density matrix is stored at acquisition start.\n"
                                "Copied spatial density-matrix result to " +
                                tree.result("small") + "\n";
    EXPECT_EQ(run.out, listing + summary + sectors);
}

TEST(RunModel, ASpatialRunWorksInItsOwnScratchFolderAndPublishesItsDensityMatrices) {
    TempTree temp;
    const ProgramTree tree(temp.root());
    ASSERT_EQ(tree.run({"--run-model", tree.write_model(spatial_model())}).status, 0);
    const std::vector<fs::path> scratch = tree.scratch_folders();
    ASSERT_EQ(scratch.size(), 1u);
    EXPECT_EQ(scratch[0].filename().string().rfind("spatial_", 0), 0u);
    EXPECT_EQ(read_file(scratch[0] / "dm.bin"), read_file(tree.result("spatial")));
    EXPECT_EQ(read_file(tree.result("spatial")).substr(0, 12), bytes_of<int>({0, 2, 12}));
    EXPECT_FALSE(fs::exists(scratch[0] / "store"));
    EXPECT_FALSE(fs::exists(fs::path(tree.runtime()) / "dm.bin"));
}

TEST(RunModel, ASecondRunGivesTheSameBytes) {
    TempTree temp;
    const ProgramTree tree(temp.root());
    const std::string path = tree.write_model(spatial_model());
    const ProgramResult first = tree.run({"--run-model", path});
    const std::string bytes = read_file(tree.result("spatial"));
    fs::remove(tree.result("spatial"));
    const ProgramResult second = tree.run({"--run-model", path});
    EXPECT_EQ(read_file(tree.result("spatial")), bytes);
    EXPECT_EQ(first.out, second.out);
    EXPECT_EQ(tree.scratch_folders().size(), 2u);
}

TEST(RunModel, ProgressCountsVoxelsAndSectors) {
    TempTree temp;
    const ProgramTree tree(temp.root());
    const ProgramResult run = tree.run({"--run-model", tree.write_model(spatial_model())});
    EXPECT_EQ(count_of(run.out, "[KOR_PROGRESS]"), 24);
    EXPECT_TRUE(contains(run.out, "[KOR_PROGRESS] sector=1 sectors=2 voxel=5 voxels=12 percent=20\n"));
    EXPECT_TRUE(contains(run.out, "[KOR_PROGRESS] sector=2 sectors=2 voxel=1 voxels=12 percent=54\n"));
    EXPECT_TRUE(contains(run.out, "[KOR_PROGRESS] sector=2 sectors=2 voxel=12 voxels=12 percent=100\n"));
}

TEST(RunModel, AThousandVoxelsReportTheFirstAndEveryTenth) {
    TempTree temp;
    const ProgramTree tree(temp.root());
    ModelText model = spatial_model();
    model.ndx = model.ndy = model.ndz = 10;
    const ProgramResult run = tree.run({"--run-model", tree.write_model(model)});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(count_of(run.out, "[KOR_PROGRESS] sector=1 sectors=2 "), 101);
    for (const char* line : {"voxel=1 voxels=1000 percent=0\n", "voxel=10 voxels=1000 percent=0\n",
                             "voxel=20 voxels=1000 percent=1\n", "voxel=1000 voxels=1000 percent=50\n"})
        EXPECT_EQ(count_of(run.out, std::string("[KOR_PROGRESS] sector=1 sectors=2 ") + line), 1) << line;
}

TEST(ExpectationProfile, EveryVoxelHasRotatedAsItsFieldsSay) {
    TempTree temp;
    const ProgramTree tree(temp.root());
    const ModelText model = spatial_model();
    const std::string path = tree.write_model(model);
    ASSERT_EQ(tree.run({"--run-model", path}).status, 0);

    const char* operators[] = {"Ix", "Iy", "Iz"};
    for (std::size_t component = 0; component < 3; ++component) {
        const std::string output = temp.path("profile.csv");
        const ProgramResult run =
            tree.run({"--expectation-profile", path, tree.result("spatial"), operators[component], output});
        ASSERT_EQ(run.status, 0) << run.err;
        EXPECT_TRUE(contains(run.out, std::string("Wrote expectation profile for ") + operators[component] +
                                          " to " + output + "\n"));
        std::istringstream csv(read_text(output));
        std::string line;
        std::getline(csv, line);
        EXPECT_EQ(line, "# index,x_cm,y_cm,z_cm,expectation_re,expectation_im");
        for (int point = 1; point <= 12; ++point) {
            ASSERT_TRUE(std::getline(csv, line));
            const ProfileLine parsed = parse_profile_line(line);
            EXPECT_EQ(parsed.index, point);
            EXPECT_EQ(parsed.position, voxel_position(model, point));
            EXPECT_NEAR(parsed.re, magnetisation_at_acquisition(model, point)[component], 1e-12) << point;
            EXPECT_NEAR(parsed.im, 0.0, 1e-13);
        }
        EXPECT_FALSE(std::getline(csv, line));
    }
    EXPECT_EQ(tree.scratch_folders().size(), 1u); // the run's: a profile needs none
}

TEST(ExpectationProfile, ARejectedExpressionGivesStatusOneAndNoFile) {
    TempTree temp;
    const ProgramTree tree(temp.root());
    const std::string path = tree.write_model(spatial_model());
    ASSERT_EQ(tree.run({"--run-model", path}).status, 0);
    const ProgramResult run =
        tree.run({"--expectation-profile", path, tree.result("spatial"), "Sx", temp.path("profile.csv")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "Expectation profile: invalid operator expression 'Sx'.\n");
    EXPECT_FALSE(temp.exists("profile.csv"));
}

TEST(VoxelSignal, AVoxelPrecessesFromItsMagnetisationAtAcquisition) {
    TempTree temp;
    const ProgramTree tree(temp.root());
    const ModelText model = spatial_model();
    const std::string path = tree.write_model(model);
    ASSERT_EQ(tree.run({"--run-model", path}).status, 0);
    const std::string output = temp.path("signal.bin");
    for (int point : {1, 7, 12}) {
        const ProgramResult run =
            tree.run({"--voxel-signal", path, tree.result("spatial"), std::to_string(point), output});
        ASSERT_EQ(run.status, 0) << run.err;
        EXPECT_TRUE(contains(run.out, "Wrote voxel " + std::to_string(point) + " receiver signal to " +
                                          output + " (samples=32 acquisition=0.064 s).\n"));
        const Vector m = magnetisation_at_acquisition(model, point);
        Signal expected;
        for (int k = 0; k < 32; ++k)
            expected.push_back(std::complex<double>(m[0], m[1]) *
                               std::polar(1.0, -2.0 * PI * (35.0 - 12.5) * 0.064 / 32 * k));
        expect_signal_file(output, 32, 1, expected, 1e-12);
    }
}

TEST(VoxelSignal, LeavesTheRunsFilesAndNoTemporaryOnes) {
    TempTree temp;
    const ProgramTree tree(temp.root());
    const std::string path = tree.write_model(spatial_model());
    ASSERT_EQ(tree.run({"--run-model", path}).status, 0);
    const fs::path run_folder = tree.scratch_folders().at(0);
    const std::string density = read_file(run_folder / "dm.bin");
    ASSERT_EQ(tree.run({"--voxel-signal", path, (run_folder / "dm.bin").string(), "1", "signal.bin"}).status,
              0);
    EXPECT_EQ(read_file(run_folder / "dm.bin"), density);
    ASSERT_EQ(tree.scratch_folders().size(), 2u);
    for (const fs::path& folder : tree.scratch_folders())
        if (folder != run_folder) {
            EXPECT_FALSE(fs::exists(folder / "dm.bin"));
            EXPECT_TRUE(fs::exists(folder / "signal.bin")); // relative names mean the scratch folder
        }
}

TEST(VoxelSignal, APointBeyondTheFileGivesStatusOne) {
    TempTree temp;
    const ProgramTree tree(temp.root());
    const std::string path = tree.write_model(spatial_model());
    ASSERT_EQ(tree.run({"--run-model", path}).status, 0);
    const ProgramResult run =
        tree.run({"--voxel-signal", path, tree.result("spatial"), "13", temp.path("signal.bin")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "Voxel signal: incompatible density file or point index (type=0 n=2 points=12 "
                       "requested=13 expected_n=2).\n");
    EXPECT_FALSE(temp.exists("signal.bin"));
}

// Two weakly coupled spins after an ideal pulse: each is a doublet, i cos(pi J t) exp(-i w t), w its offset
// plus that of the receiver.
TEST(RunModel, APulseAcquireRunRecordsTheDoubletsOfTwoCoupledSpins) {
    TempTree temp;
    const ProgramTree tree(temp.root());
    ModelText model;
    model.name = "fid";
    model.offsets_hz = {100.0, -40.0};
    model.intensities = {1.0, 0.5};
    model.j_hz = 12.0;
    model.sequence_type = 2;
    model.sectors = {ideal_pulse(), acquisition(64, 0.128, 7.0)};
    const ProgramResult run = tree.run({"--run-model", tree.write_model(model)});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    for (const char* line :
         {"Running current prepared 1D / 2D NMR model...\n", "Number of pulse sectors to calculate    : 2\n",
          "Detected sequence subtype               : pulse-acquire FID\n",
          "Sector type                             : 1  # normal sector\n",
          "Remark on sector                        : excitation\n",
          "ADC sector marked for receiver/FID export; density matrix is preserved at acquisition start.\n"})
        EXPECT_TRUE(contains(run.out, line)) << line;
    EXPECT_TRUE(contains(run.out, "Wrote complex receiver signal to " + tree.result("fid") +
                                      " (samples=64, acquisition=0.128 s)\n"));
    Signal expected;
    for (int k = 0; k < 64; ++k) {
        const double t = 0.128 / 64 * k;
        const std::complex<double> start(0.0, std::cos(PI * 12.0 * t));
        expected.push_back(
            start * (std::polar(1.0, -2.0 * PI * 107.0 * t) + 0.5 * std::polar(1.0, 2.0 * PI * 33.0 * t)));
    }
    // During the pulse of 1e-15 s the offsets turn the spins by about 1e-12.
    expect_signal_file(tree.result("fid"), 64, 1, expected, 1e-10);
}

TEST(RunModel, ATwoDimensionalRunRecordsOneSignalPerEvolutionTime) {
    TempTree temp;
    const ProgramTree tree(temp.root());
    ModelText model;
    model.name = "rows";
    model.offsets_hz = {30.0};
    model.sequence_type = 2;
    SectorText evolution;
    evolution.type = 2;
    evolution.rows = 5;
    evolution.duration_s = 4e-3;
    evolution.blocks = {{0.0}, {0.0}};
    evolution.remark = "evolution";
    model.sectors = {ideal_pulse(), evolution, acquisition(16, 0.08, 0.0)};
    const ProgramResult run = tree.run({"--run-model", tree.write_model(model)});
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(contains(run.out, "Sector type                             : 2  # evolution sector\n"));
    EXPECT_TRUE(contains(run.out, "Wrote 2D complex receiver signal to " + tree.result("rows") +
                                      " (samples=16, evolution rows=5, acquisition=0.08 s)\n"));
    EXPECT_FALSE(contains(run.out, "pulse-acquire FID"));
    Signal expected;
    for (int row = 0; row < 5; ++row)
        for (int k = 0; k < 16; ++k)
            expected.push_back(std::complex<double>(0.0, 1.0) *
                               std::polar(1.0, -2.0 * PI * 30.0 * (4e-3 * row + 0.08 / 16 * k)));
    expect_signal_file(tree.result("rows"), 16, 5, expected, 1e-10);
}

TEST(RunModel, AnUnreadableWaveformEndsTheRunWithItsMessageAndStatusZero) {
    TempTree temp;
    const ProgramTree tree(temp.root());
    ModelText model = spatial_model();
    model.sectors[1].blocks = {{0.0}};
    const ProgramResult run = tree.run({"--run-model", tree.write_model(model)});
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(contains(run.out, "Error reading pulse file " + tree.waveform("spatial", 2) + "\n"));
    EXPECT_TRUE(contains(run.out, "[KOR_PROGRESS] sector=1 sectors=2 voxel=12 voxels=12 percent=50\n"));
    EXPECT_FALSE(contains(run.out, "[KOR_PROGRESS] sector=2"));
    EXPECT_FALSE(fs::exists(tree.result("spatial")));
}

TEST(RunModel, ASampleThatIsNoNumberEndsTheRun) {
    TempTree temp;
    const ProgramTree tree(temp.root());
    ModelText model = spatial_model();
    model.sectors[0].blocks[4][2] = std::nan("");
    const ProgramResult run = tree.run({"--run-model", tree.write_model(model)});
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(contains(run.out, "Bad pulse sample at l=2: xb=0 yb=6000 gx=0 gy=100 gz=nan\n"));
    EXPECT_FALSE(fs::exists(tree.result("spatial")));
}

TEST(RunModel, AThousandAcquisitionSamplesWriteNoSignal) {
    TempTree temp;
    const ProgramTree tree(temp.root());
    ModelText model;
    model.name = "odd";
    model.offsets_hz = {0.0};
    model.sequence_type = 2;
    model.sectors = {ideal_pulse(), acquisition(1000, 1.0, 0.0)};
    const ProgramResult run = tree.run({"--run-model", tree.write_model(model)});
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(
        contains(run.out, "ADC sample count 1000 is not a power of two; not writing receiver signal.\n"));
    EXPECT_FALSE(fs::exists(tree.result("odd")));
}

TEST(RunModel, AModelThatCannotBeLoadedGivesStatusOne) {
    TempTree temp;
    const ProgramTree tree(temp.root());
    const std::string path = temp.path("models/none.kormodel");
    const ProgramResult run = tree.run({"--run-model", path});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "[KOR] Load failed: i/o error (could not open '" + path +
                           "' for reading)\n[KOR] Path used: " + path + "\n");
}

TEST(MainMenu, TheReferenceChecksAllPassTwiceInARow) {
    TempTree temp;
    const ProgramTree tree(temp.root());
    const std::string report = "\n[KOR] Running developer smoke/reference checks...\n\n"
                               "PASS          spin-operator-reference\n"
                               "PASS          hamiltonian-reference\n"
                               "PASS          weak-two-spin-spectrum-reference\n"
                               "PASS          spatial-gradient-reference\n"
                               "PASS          split-composition-reference\n"
                               "PASS          malformed-duplicate-key\n"
                               "PASS          malformed-invalid-sequence-type\n"
                               "All kormodel smoke/reference checks passed.\n"
                               "\nPress Enter to return to the menu...";
    const ProgramResult run = tree.run({}, "5\n\n5\n\n6\n");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(count_of(run.out, report), 2) << run.out;
    EXPECT_EQ(count_of(run.out, "FAIL"), 0);
    EXPECT_TRUE(temp.exists("build/runtime/kor-refcheck-work/split-composition/models/case.kormodel"));
}
